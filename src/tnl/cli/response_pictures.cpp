#include "tnl/cli/response_pictures.h"

#include "tnl/common/scratch_folder.h"
#include "tnl/elements/response_deck.h"
#include "tnl/plot/plot_rows.h"
#include "tnl/run/run_folder.h"

namespace cli {

namespace {
constexpr picture_size size = {520, 0};  // px
constexpr int columns = 260;             // of points
}  // namespace

std::string response_picture(const element_sheet& sheet, const installation& where) {
    const response_deck deck = response_of(sheet);
    if (deck.text.empty()) return {};
    const scratch_folder folder;
    if (folder.path.empty()) throw file_error("cannot make a folder for runs in " + folder.fault);
    const std::filesystem::path in = folder.path / "response.in";
    write_file(in, deck.text);
    for (const response_deck::data_file& f : deck.files) write_file(folder.path / f.name, f.text);
    run_options options;
    options.deck = in.string();
    options.silent = true;
    const run_result run = run_deck(options, where);
    if (run.status != good)
        throw deck_error("the response of " + sheet.family + ":" + sheet.name + " does not run: " + run.record.message);
    const std::string rows = (run.folder / response_rows).string();
    result_table table = read_result_table(read_file(rows), rows);
    if (table.n_columns() != deck.columns.size()) throw deck_error(rows + " has not the columns of its deck");
    table.columns = deck.columns;
    plot_choice choice;
    choice.title = sheet.name;
    choice.logic = deck.lanes;
    std::vector<int> shown;
    for (int j = 1; j < static_cast<int>(table.n_columns()); ++j)
        if (j != deck.x) shown.push_back(j);
    const plot p = plot_of_rows({{&table, "", deck.x, shown, {}}}, choice, columns);
    return draw_svg(p, size);
}

}  // namespace cli
