#include "tnl/cli/doctor.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <nlohmann/json.hpp>

#include "installed_share.h"
#include "temp_folder.h"

namespace {

namespace fs = std::filesystem;
using namespace cli;

TEST(library_faults, are_none_in_what_the_build_installs) {
    EXPECT_EQ(library_faults(installed_share()), std::vector<std::string>{});
}

TEST(library_faults, name_missing_files_cut_entries_and_calls_that_lead_nowhere) {
    const temp_folder here;
    EXPECT_EQ(library_faults("nosuch").size(), static_cast<std::size_t>(n_libraries) + std::size(listed_libraries));
    for (const fs::directory_entry& file : fs::directory_iterator(TARNEL_SHARE))
        if (file.is_regular_file()) fs::copy(file.path(), file.path().filename());
    EXPECT_EQ(library_faults("."), std::vector<std::string>{});
    ::write_file("gmes.aux", "");  // these call electrical ones
    const std::string eels = ::read_file("eels.aux");
    ::write_file("eels.aux", eels.substr(0, eels.size() - 20));
    ASSERT_EQ(library_faults(".").size(), 1U);
    EXPECT_NE(library_faults(".")[0].find("has no end"), std::string::npos);
    ::write_file("gmes.aux", "");  // whose entries call those of eels
    ::write_file("eels.aux", "ece name=r\nebe type=nosuch name=x p=p\nendece\n");
    EXPECT_EQ(library_faults("."), std::vector<std::string>{"ece r calls nosuch, which ebes.aux lacks"});
    fs::remove("gbes.aux");
    EXPECT_EQ(library_faults("."), std::vector<std::string>{"gbes.aux is missing"});
}

TEST(doctor, without_simulator_and_libraries_is_not_well) {
    const temp_folder here;
    const std::vector<finding> findings = examine({"nowhere/tarnel", "nowhere/share"}, "1", {});
    EXPECT_FALSE(is_well(findings));
    EXPECT_NE(findings_text(findings, false).find("MISSING  libraries: nowhere/share is missing"), std::string::npos);
    EXPECT_EQ(nlohmann::json::parse(findings_json(findings))["well"], false);
    const auto at =
        std::find_if(findings.begin(), findings.end(), [](const auto& f) { return f.what == "this folder"; });
    ASSERT_NE(at, findings.end());
}

TEST(doctor, is_well_with_remarks_alone) {
    EXPECT_TRUE(is_well({{finding::fine, "a", ""}, {finding::remark, "b", ""}}));
    EXPECT_FALSE(is_well({{finding::fine, "a", ""}, {finding::fault, "b", ""}}));
    EXPECT_EQ(findings_text({{finding::remark, "b", "c"}}, true), "\x1b[33mnote   \x1b[0m  b: c\n");
}

}  // namespace
