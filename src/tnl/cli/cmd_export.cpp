#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <memory>
#include <optional>

#include "tnl/cli/commands.h"
#include "tnl/common/exit_status.h"
#include "tnl/results/export.h"
#include "tnl/results/run_tables.h"

namespace cli {

namespace {

struct export_format {
    const char *flag, *text;
    void (*write)(const export_choice& c, output_file& out);
    bool has_axis = false;  // the first column is always there
    bool is_binary = false;
};
const export_format formats[] = {
    {"--csv", "Comma-separated values, RFC 4180", write_csv},
    {"--tsv", "Values with tabs between them", write_tsv},
    {"--npy", "NumPy array with a field for each column", write_npy, false, true},
    {"--raw", "Rawfile of circuit simulators, as text", write_raw, true},
    {"--vcd", "Value change dump for logic viewers; rows over time only", write_vcd, true},
};

struct export_options {
    std::string run, file, output = "-";
    std::vector<std::string> columns;
    int curve = 0;
    bool wanted[std::size(formats)] = {};
    bool with_units = false, binary = false, cartesian = false, polar = false, buses = false;
};

void check_time_table(const result_table& table, const curve_range& curves) {
    const bool is_time = table.columns[0].unit == "s" || table.columns[0].name == "time";
    const bool is_unknown = table.kind.empty() && table.columns[0].unit.empty() && table.columns[0].name == "c1";
    if (!is_time && !is_unknown)
        throw usage_error("a VCD file shows rows over time; the first column of " + table.path + " is " +
                          table.columns[0].name);
    if (curves.end - curves.first != 1)
        throw usage_error("a VCD file has one time line; " + table.path + " has " + std::to_string(table.n_curves()) +
                          " curves: choose one with --curve");
}

int export_command(const export_options& options) {
    const auto n_wanted = std::count(std::begin(options.wanted), std::end(options.wanted), true);
    if (n_wanted != 1) throw usage_error("choose one of --csv, --tsv, --npy, --raw and --vcd");
    const export_format& format =
        formats[std::find(std::begin(options.wanted), std::end(options.wanted), true) - std::begin(options.wanted)];
    if (options.binary && format.write != write_raw) throw usage_error("--binary belongs to --raw");
    if (options.buses && format.write != write_vcd) throw usage_error("--buses belongs to --vcd");
    if (options.with_units && format.write != write_csv && format.write != write_tsv)
        throw usage_error("--units belongs to --csv and --tsv");
    if (options.cartesian && options.polar) throw usage_error("--cartesian and --polar exclude each other");
    if ((options.cartesian || options.polar) && format.write == write_raw)
        throw usage_error("a rawfile has small signals as complex numbers, without --cartesian or --polar");
    if ((format.is_binary || options.binary) && options.output == "-" && ::isatty(STDOUT_FILENO) == 1)
        throw usage_error("this format is not for a terminal; name a file with -o");

    run_tables tables(options.run, options.file);
    const result_table& all = tables.with_columns(options.columns, format.write == write_vcd);
    std::vector<std::string> names = options.columns;
    if (format.has_axis && !names.empty() && find_column(all, names[0]) != 0) names.insert(names.begin(), "1");
    // Small signals have two columns, which may be computed; all other rows are taken as they stand.
    std::optional<result_table> made;
    if (is_over_frequency(all)) {
        made = chosen_columns(all, names,
                              options.cartesian || format.write == write_raw ? small_signal_form::cartesian
                              : options.polar                                ? small_signal_form::polar
                                                                             : small_signal_form::as_it_is);
        names.clear();
    }
    const result_table& table = made ? *made : all;
    const curve_range curves = curves_of(table, options.curve);
    if (format.write == write_vcd) check_time_table(table, curves);
    export_choice choice{table,
                         {},
                         curves.first,
                         curves.end,
                         tables.record().title,
                         tables.record().began,
                         options.with_units,
                         options.binary,
                         options.buses};
    for (const std::string& name : names) choice.columns.push_back(static_cast<std::size_t>(find_column(table, name)));
    for (std::size_t j = 0; names.empty() && j < table.n_columns(); ++j) choice.columns.push_back(j);

    output_file out(options.output);
    format.write(choice, out);
    out.commit();
    std::fputs(tables.note().c_str(), stderr);
    return good;
}

}  // namespace

void add_export(CLI::App& app, command_list& commands) {
    const auto options = std::make_shared<export_options>();
    CLI::App* sub = app.add_subcommand("export", "Write the rows of a run for other programs");
    sub->add_option("RUN", options->run, "Run folder, its deck, or a row file; - for rows on standard input")
        ->required();
    sub->add_option("COLUMNS", options->columns,
                    "Names or numbers of columns or small signals, in this order; otherwise all");
    for (std::size_t i = 0; i < std::size(formats); ++i)
        sub->add_flag(formats[i].flag, options->wanted[i], formats[i].text);
    sub->add_option("-o,--output", options->output, "File to write; - for standard output")->capture_default_str();
    sub->add_option("--file", options->file, "Row file of the run, when it has several");
    sub->add_option("--curve", options->curve, "Only this curve, counted from 1")->check(CLI::PositiveNumber);
    sub->add_flag("--units", options->with_units, "csv, tsv: names with their units, vout [V]");
    sub->add_flag("--cartesian", options->cartesian, "csv, tsv, npy: small signals as real_of_X and imag_of_X");
    sub->add_flag("--polar", options->polar, "csv, tsv, npy: small signals as mag_of_X and phase_of_X");
    sub->add_flag("--binary", options->binary, "raw: numbers as bytes");
    sub->add_flag("--buses", options->buses, "vcd: bits of a number, as q0 q1 q2, as one vector");
    sub->footer(
        "Numbers are the shortest that read back as the same. Several curves get a first column curve (csv, tsv, npy)\n"
        "or a plot each (raw). raw and vcd always have the first column as their axis. In VCD files, digital levels\n"
        "and columns of two values are wires of one bit; of a run's files, one of levels is taken\n"
        "first. A file appears under its name when it is complete.");
    commands.push_back({sub, [options] { return export_command(*options); }});
}

}  // namespace cli
