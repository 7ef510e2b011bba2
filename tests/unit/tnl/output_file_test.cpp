#include "tnl/common/output_file.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>

#include "temp_folder.h"
#include "tnl/common/exit_status.h"

namespace {

namespace fs = std::filesystem;
using cli::output_file;

int n_entries(const fs::path& folder) {
    return static_cast<int>(std::distance(fs::directory_iterator(folder), fs::directory_iterator()));
}

std::string fault_of(const std::string& path, std::string_view text) {
    try {
        cli::write_output(path, text);
    } catch (const cli::file_error& e) {
        return e.what();
    }
    return "";
}

TEST(output_file, appears_with_commit_and_not_before) {
    const temp_folder here;
    write_file("out", "old");
    {
        output_file file("out");
        file.write("new ");
        file.write(std::string(3 << 20, 'x'));  // more than the buffer
        EXPECT_EQ(read_file("out"), "old");
        file.commit();
    }
    EXPECT_EQ(read_file("out"), "new " + std::string(3 << 20, 'x'));
    EXPECT_EQ(n_entries("."), 1);
}

TEST(output_file, without_commit_the_folder_stays_as_it_was) {
    const temp_folder here;
    write_file("out", "old");
    for (const char* name : {"out", "other"}) {
        output_file file(name);
        file.write(std::string(3 << 20, 'x'));
    }
    EXPECT_EQ(read_file("out"), "old");
    EXPECT_EQ(n_entries("."), 1);
}

TEST(output_file, keeps_the_permissions_of_what_it_replaces) {
    const temp_folder here;
    write_file("out", "old");
    ASSERT_EQ(chmod("out", 0640), 0);
    cli::write_output("out", "new");
    struct stat status;
    ASSERT_EQ(stat("out", &status), 0);
    EXPECT_EQ(status.st_mode & 0777u, 0640u);
    EXPECT_EQ(read_file("out"), "new");
}

TEST(output_file, follows_links_also_to_files_that_are_not_there_yet) {
    const temp_folder here;
    fs::create_directory("d");
    fs::create_symlink("d/one", "first");
    fs::create_symlink("first", "second");
    for (const char* text : {"a", "b"}) {
        cli::write_output("second", text);
        EXPECT_EQ(read_file("d/one"), text);
        EXPECT_TRUE(fs::is_symlink("second"));
        EXPECT_EQ(n_entries("d"), 1);
    }
}

TEST(output_file, folders_are_refused_and_stay) {
    const temp_folder here;
    fs::create_directory("d");
    EXPECT_EQ(fault_of("d", "x"), "cannot write d: it is a folder");
    EXPECT_EQ(fault_of("new/", "x"), "cannot write new/: it is a folder");
    EXPECT_EQ(fault_of("", "x"), "cannot write : No such file or directory");
    EXPECT_EQ(fault_of("none/out", "x"), "cannot write none/out: No such file or directory");
    EXPECT_EQ(n_entries("."), 1);
    EXPECT_EQ(n_entries("d"), 0);
}

TEST(output_file, a_full_device_is_told_with_its_name) {
    EXPECT_EQ(fault_of("/dev/full", "x"), "cannot write /dev/full: No space left on device");
    EXPECT_EQ(fault_of("/dev/full", std::string(3 << 20, 'x')), "cannot write /dev/full: No space left on device");
    EXPECT_EQ(fault_of("/dev/null", "x"), "");
    EXPECT_TRUE(fs::is_character_file("/dev/full"));
    EXPECT_TRUE(fs::is_character_file("/dev/null"));
}

}  // namespace
