#include "tnl/cli/demo.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>

#include "tnl/plot/plot_rows.h"
#include "tnl/results/rows.h"
#include "tnl/run/run_folder.h"

namespace cli {

namespace {

constexpr std::string_view bridge = R"(title: transfer curve of a diode bridge
# The source floats between a and b; two diodes conduct at a time, so the load sees |vin| less two diode drops.
begin_circuit
refnode 0
eelement name=V1 type=vsrcdc p=a n=b vdc=0
eelement name=D1 type=diode p=a n=out
eelement name=D2 type=diode p=b n=out
eelement name=D3 type=diode p=0 n=a
eelement name=D4 type=diode p=0 n=b
eelement name=RL type=r p=out n=0 r=1k
outvar: vout=nodev_of_out
end_circuit
begin_solve
solve_type dc
vary_parm vdc_of_V1 from -5 to 5 type linear n_points 101
begin_output
filename bridge.dat
variables: vdc_of_V1 vout
end_output
end_solve
end_cf
)";

constexpr std::string_view network = R"(title: a loaded potentiometer
# 10 V across 1 kOhm, the wiper at a; three loads from the wiper to ground bend the straight line.
begin_circuit
refnode 0
eelement name=V1 type=vsrcdc p=in n=0 vdc=10
eelement name=P1 type=r_pot p=0 w=out n=in r=1k a=0.5
eelement name=RL type=r p=out n=0 r=1k
outvar: vout=nodev_of_out
end_circuit
begin_solve
solve_type dc
vary_parm r_of_RL type table 100k 1k 200
vary_parm a_of_P1 from 0.01 to 0.99 type linear n_points 50
begin_output
filename network.dat
variables: a_of_P1 vout
end_output
end_solve
end_cf
)";

// The first column against the others, under the names that the deck's story gives them.
plot plot_of(const demo_deck& deck, const std::string& title, result_table table) {
    if (table.n_columns() == deck.columns.size()) table.columns = deck.columns;
    plot_choice choice;
    choice.title = title;
    plot p = plot_of_rows({{&table, "", 0, drawn_columns(table, 0), {}}}, choice);
    for (plot_panel& panel : p.panels)
        for (std::size_t k = 0; k < std::min(panel.series.size(), deck.curves.size()); ++k)
            panel.series[k].name = deck.curves[k];
    return p;
}

}  // namespace

const std::vector<demo_deck>& demo_decks() {
    static const std::vector<demo_deck> decks = {
        {"bridge",
         "a diode bridge with a load of 1 kOhm, its source swept from -5 V to 5 V",
         bridge,
         {{"source voltage", "V"}, {"load voltage", "V"}},
         {}},
        {"network",
         "a potentiometer of 1 kOhm at 10 V, its wiper moved from end to end under three loads",
         network,
         {{"position of the wiper", ""}, {"output voltage", "V"}},
         {"load 100k", "load 1k", "load 200"}},
    };
    return decks;
}

int run_demo(const std::string& folder, const installation& where, const terminal& t) {
    namespace fs = std::filesystem;
    std::error_code error;
    if (!fs::create_directories(folder, error) && error)
        throw file_error("cannot make " + folder + ": " + error.message());
    for (const demo_deck& deck : demo_decks()) {
        const std::string base = folder + "/" + std::string(deck.name);
        write_file(base + ".in", std::string(deck.text));
        std::printf("%s%s\n\n  tnl run %s.in\n\n", &deck == &demo_decks().front() ? "" : "\n",
                    std::string(deck.says).c_str(), base.c_str());
        const run_result run = run_deck({base + ".in", ""}, where);
        if (run.status != good) return run.status;

        const written_file file = written_files(run.deck).at(0);
        const std::string rows = (run.folder / file.path).string();
        result_table table = read_result_table(read_file(rows), rows);
        if (table.n_columns() == file.columns.size())
            for (std::size_t j = 0; j < file.columns.size(); ++j) table.columns[j].name = file.columns[j];
        const plot p = plot_of(deck, title_of(run.deck), table);
        const std::string picture = base + ".svg";
        write_file(picture, draw_svg(p));
        const std::string text = format_rows(table, table.n_curves() > 1 ? 4 : 11);
        std::printf("\n%s\n%s\nrows     %s\npicture  %s\n", text.c_str(), draw_in_terminal(p, t).c_str(), rows.c_str(),
                    picture.c_str());
        std::fflush(stdout);
    }
    return good;
}

}  // namespace cli
