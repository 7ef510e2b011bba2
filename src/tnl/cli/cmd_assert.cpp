#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <optional>

#include "tnl/cli/commands.h"
#include "tnl/common/exit_status.h"
#include "tnl/common/output_file.h"
#include "tnl/plot/plot_rows.h"
#include "tnl/results/junit.h"
#include "tnl/results/measure.h"
#include "tnl/results/run_tables.h"

namespace cli {

namespace {

struct assert_options {
    std::string run, file, junit;
    std::vector<std::string> assertions;
    int curve = 0;
    bool cut = false;
};

// What was measured on each side that is not a number as it stands.
std::string found(const expression& e, const measured& m) {
    std::string text;
    for (std::size_t i = 0; i < e.sides.size(); ++i)
        if (!e.sides[i].constant) text += (text.empty() ? "" : ", ") + e.sides[i].text + " = " + text_of(m.sides[i]);
    return text;
}

// An assertion about several curves must hold in each.
test_result measured_claim(const expression& e, run_tables& tables, int curve) {
    const result_table& table = tables.with_columns(e.names);
    const curve_range curves = curves_of(table, curve);
    test_result result{e.label, test_result::pass, ""};
    for (std::size_t k = curves.first; k < curves.end; ++k) {
        std::string message;
        try {
            const measured m = evaluate(e, table, k);
            if (m.holds) continue;
            message = found(e, m);
            if (result.is == test_result::pass) result.is = test_result::fail;
        } catch (const measure_error& fault) {
            message = fault.what();
            result.is = test_result::error;
        }
        const std::string swept = table.sweeps.empty() ? "" : " (" + text_of_sweeps(table.sweeps, k) + ")";
        if (table.n_curves() > 1) message = "curve " + std::to_string(k + 1) + swept + ": " + message;
        result.message += (result.message.empty() ? "" : "; ") + message;
    }
    return result;
}

// A claim about columns that the run does not have does not keep the others back; its status is the worst.
test_result judge(const expression& e, run_tables& tables, int curve, int& status) {
    try {
        const test_result r = measured_claim(e, tables, curve);
        if (r.is != test_result::pass && status == good) status = assertion_failed;
        return r;
    } catch (const command_error& fault) {
        if (status == good || status == assertion_failed) status = fault.status;
        return {e.label, test_result::error, fault.what()};
    }
}

void print(const std::vector<test_result>& results, std::FILE* to) {
    const bool colour = ::isatty(::fileno(to)) == 1 && std::getenv("NO_COLOR") == nullptr;
    for (const test_result& r : results) {
        const bool pass = r.is == test_result::pass;
        std::fprintf(to, "%s%s%s  %s%s%s%s\n", colour ? (pass ? "\033[32m" : "\033[31m") : "", pass ? "pass" : "FAIL",
                     colour ? "\033[0m" : "", r.name.c_str(), pass ? "" : "  (", r.message.c_str(), pass ? "" : ")");
    }
}

int assert_command(const assert_options& options) {
    std::vector<expression> expressions;
    for (const std::string& text : options.assertions) {
        expressions.push_back(parse_expression(text));
        if (expressions.back().relations.empty())
            throw usage_error(text + " claims nothing; compare it: '" + text + " < 3.2'");
    }
    // A report that cannot be written is told before anything is measured.
    std::optional<output_file> report;
    if (!options.junit.empty()) report.emplace(options.junit);

    run_tables tables(options.run, options.file);
    std::vector<test_result> results;
    int status = good;
    // What holds of the rows up to there need not hold of the whole.
    const std::string why_cut = options.cut ? "" : tables.cut();
    if (!why_cut.empty()) results.push_back({"the run came to its end", test_result::error, why_cut});
    for (const expression& e : expressions) results.push_back(judge(e, tables, options.curve, status));
    print(results, options.junit == "-" ? stderr : stdout);
    if (std::fflush(stdout) != 0 || std::ferror(stdout) != 0) throw file_error("cannot write standard output");
    std::fputs(tables.note().c_str(), stderr);
    if (report) {
        report->write(junit_xml("tnl assert " + options.run, results));
        report->commit();
    }
    if (!why_cut.empty() && status != usage_fault) return limit_reached;
    return status;
}

}  // namespace

void add_assert(CLI::App& app, command_list& commands) {
    const auto options = std::make_shared<assert_options>();
    CLI::App* assert = app.add_subcommand("assert", "Hold measurements against limits: 'rms(i1) < 3.2'");
    assert->add_option("RUN", options->run, "Run folder, its deck, or a row file; - for rows on standard input")
        ->required();
    assert->add_option("CLAIM", options->assertions, "Comparisons: 'rms(i1) < 3.2', '4.9 < avg(vout) < 5.1'")
        ->required();
    assert->add_option("--junit", options->junit, "File for a report in JUnit's XML; - for standard output");
    assert->add_option("--file", options->file, "Row file of the run, when several hold these columns");
    assert->add_option("--curve", options->curve, "Only this curve, counted from 1; otherwise all")
        ->check(CLI::PositiveNumber);
    assert->add_flag("--cut", options->cut, "Judge the rows that there are of a run that did not come to its end");
    assert->footer(
        "Relations are < <= > >= == and !=; expressions are those of tnl measure (tnl measure --help).\n"
        "A claim that cannot be measured has failed. Exit status: 0 all hold, 4 some do not, 6 the run did not come\n"
        "to its end, so that its rows settle nothing.");
    commands.push_back({assert, [options] { return assert_command(*options); }});
}

}  // namespace cli
