#include <algorithm>
#include <cmath>
#include <cstdio>
#include <memory>
#include <nlohmann/json.hpp>

#include "tnl/cli/commands.h"
#include "tnl/common/exit_status.h"
#include "tnl/common/output_file.h"
#include "tnl/plot/plot_rows.h"
#include "tnl/results/measure.h"
#include "tnl/results/run_tables.h"

namespace cli {

namespace {

struct measure_options {
    std::string run, file;
    std::vector<std::string> expressions;
    int curve = 0;
    bool json = false;
};

// What was measured, and the worst status. An expression at fault does not keep the others back.
struct measurements {
    nlohmann::ordered_json all = nlohmann::ordered_json::array();
    std::string text;
    int status = good;
};

void measure(const expression& e, run_tables& tables, int curve, measurements& m) {
    const result_table& table = tables.with_columns(e.names);
    const curve_range curves = curves_of(table, curve);
    for (std::size_t k = curves.first; k < curves.end; ++k) {
        const std::string swept = table.sweeps.empty() ? "" : ": " + text_of_sweeps(table.sweeps, k);
        const std::string which = table.n_curves() > 1 ? " [curve " + std::to_string(k + 1) + swept + "]" : "";
        nlohmann::ordered_json one = {{"name", e.label}, {"expression", e.text}};
        if (table.n_curves() > 1) one["curve"] = k + 1;
        for (const record_sweep& sweep : table.sweeps) one["sweep"][sweep.name] = sweep.values[k];
        try {
            const quantity q = evaluate(e, table, k).sides[0];
            m.text += e.label + which + " = " + text_of(q) + "\n";
            const double x = shown_value(q);
            one["value"] = std::isfinite(x) ? nlohmann::ordered_json(x) : nlohmann::ordered_json();
            one["unit"] = q.unit;
        } catch (const measure_error& fault) {
            std::fprintf(stderr, "tnl: %s%s: %s (%s)\n", e.label.c_str(), which.c_str(), fault.what(),
                         table.path.c_str());
            one["value"] = nullptr;
            one["error"] = fault.what();
            m.status = std::max<int>(m.status, file_fault);
        }
        m.all.push_back(one);
    }
}

expression without_relation(const std::string& text) {
    expression e = parse_expression(text);
    if (!e.relations.empty()) throw usage_error(text + " is a comparison; tnl assert tells whether it holds");
    return e;
}

int measure_command(const measure_options& options) {
    run_tables tables(options.run, options.file);
    measurements m;
    for (const std::string& text : options.expressions) {
        expression e{text, text, {}, {}, {}};
        try {
            e = without_relation(text);
            measure(e, tables, options.curve, m);
        } catch (const command_error& fault) {
            std::fprintf(stderr, "tnl: %s\n", fault.what());
            m.all.push_back({{"name", e.label}, {"expression", e.text}, {"value", nullptr}, {"error", fault.what()}});
            m.status = std::max<int>(m.status, fault.status);
        }
    }
    if (options.json) m.text = m.all.dump(2, ' ', false, nlohmann::json::error_handler_t::replace) + "\n";
    write_output("-", m.text);
    std::fputs(tables.note().c_str(), stderr);
    return m.status;
}

}  // namespace

void add_measure(CLI::App& app, command_list& commands) {
    const auto options = std::make_shared<measure_options>();
    CLI::App* measure = app.add_subcommand("measure", "Measure on the rows of a run: 'avg(vout, 4m, 5m)'");
    measure->add_option("RUN", options->run, "Run folder, its deck, or a row file; - for rows on standard input")
        ->required();
    measure->add_option("EXPR", options->expressions, "Expressions over the columns; NAME = EXPR gives a name")
        ->required();
    measure->add_option("--file", options->file, "Row file of the run, when several hold these columns");
    measure->add_option("--curve", options->curve, "Only this curve, counted from 1")->check(CLI::PositiveNumber);
    measure->add_flag("--json", options->json, "Results as JSON");
    measure->footer(
        "Functions of a column or of an expression of columns, v, and of a small signal, x, which is X where\n"
        "the file has mag_of_X and phase_of_X:\n" +
        function_list() +
        "Numbers are written as in decks (4m, 10k, 1M) or with %. Columns with odd names stand in `...`; $2 is"
        "\nthe second. Between rows waves are straight lines; windows have interpolated borders.");
    commands.push_back({measure, [options] { return measure_command(*options); }});
}

}  // namespace cli
