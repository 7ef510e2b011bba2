// Reads a solve block: type, cards, output blocks; then has it tested.
#include "settings/block_checks.h"
#include "settings/method_words.h"
#include "settings/output_block.h"
#include "settings/read_directives.h"
#include "settings/solve_words.h"

namespace {
struct type_word {
    std::string_view word;
    truefalse solve_class::*flag;
    solve_code code;
};
constexpr type_word type_words[] = {
    {"dc", &solve_class::dc, solve_dc_code},       {"ac", &solve_class::ac, solve_ac_code},
    {"trns", &solve_class::trns, solve_trns_code}, {"startup", &solve_class::startup, solve_startup_code},
    {"ssw", &solve_class::ssw, solve_ssw_code},
};

void read_solve_type(solve_class& slv, const block_text& block) {
    const int i = block.find(block.begin + 1, block.end, "solve_type");
    if (i < 0) halt({"solve_class: solve_type not found. Halting..."});
    const std::string word = file_get_word(block.cf.text, i, 1);
    for (const type_word& t : type_words) {
        slv.*t.flag = word == t.word ? int_T : int_F;
        if (word == t.word) slv.solve_type = t.code;
    }
    block.cf.mark(i);
}

// What a card may need besides its words.
struct card_reader {
    solve_class& slv;
    const circuit& c;
    flags_class& flags;
    int statement = -1;  // of the card
};

void read_method(card_reader& r, const words& w) {
    for (int i = 1; i + 1 < w.size(); i += 2)
        reading(r.statement, [&] {
            at_word(i);
            read_method_pair(r.slv, r.flags, r.c.gprm, w[i], w[i + 1]);
        });
}

void read_initial_sol(card_reader& r, const words& w) {
    const std::string method = pick_word_1(w, 1);
    if (method == "file") {
        if (w.size() < 3 || w[2] != "filename")
            halt({"solve_class: filename not found in", "  the initial_sol card. Halting..."});
        r.slv.task.init_sol_path = pick_word_1(w, 3);
        r.slv.task.init_file = int_T;
    } else if (method == "initialize") {
        r.slv.task.init_initialize = int_T;
    } else if (method == "previous") {
        r.slv.task.init_previous = int_T;
    } else {
        halt({"solve_class: something wrong with", "  the initial_sol card. Halting..."});
    }
}

void read_vary_card(card_reader& r, const words& w) {
    if (r.slv.trns || r.slv.ssw) halt({"solve_class: vary_parm is not allowed in", "   trns or ssw. Halting..."});
    read_vary(r.slv, r.c, w);
}

void read_vary_sync_card(card_reader& r, const words& w) {
    constexpr const char* head = "solve_class: vary_parm_sync is not allowed in";
    if (r.slv.trns || r.slv.ssw) halt({head, "   trns or ssw. Halting..."});
    if (r.slv.startup) halt({head, "   startup. Halting..."});
    read_vary_sync(r.slv, r.c, w);
}

template <auto read>
void directive(card_reader& r, const words& w) {
    read(r.slv, r.c, w);
}

struct card {
    std::string_view word;
    void (*read)(card_reader&, const words&);
};
constexpr card cards[] = {
    {"method:", read_method},
    {"initial_sol", read_initial_sol},
    {"set_parm", directive<read_items>},
    {"set_stparm", directive<read_items>},
    {"set_igparm", directive<read_items>},
    {"set_dstparm", directive<read_items>},
    {"set_digparm", directive<read_items>},
    {"vary_parm", read_vary_card},
    {"vary_parm_sync", read_vary_sync_card},
    {"set_freq", directive<read_set_freq>},
    {"vary_freq", directive<read_vary_freq>},
    {"set_dgtl", directive<read_dgtl>},
};

// Statements that no card claims stay unmarked; the driver refuses them when the block has been read.
void read_cards(solve_class& slv, const circuit& c, flags_class& flags, const block_text& block,
                const std::vector<output_block>& outputs) {
    card_reader r{slv, c, flags};
    std::size_t next_output = 0;
    for (int i = block.begin + 1; i < block.end; ++i) {
        if (next_output < outputs.size() && outputs[next_output].begin == i) {
            reading(i, [&] { read_output_block(slv, c, block, outputs[next_output]); });
            i = outputs[next_output].end;
            ++next_output;
            continue;
        }
        for (const card& k : cards)
            if (block.cf.text.begins(i, k.word)) {
                r.statement = i;
                reading(i, [&] { k.read(r, solve_line(block.cf.text, i)); });
                block.cf.mark(i);
            }
    }
}
}  // namespace

void set_values(solve_class& slv, int index_solve, circuit& c, flags_class& flags) {
    delete_arrays(slv);
    slv.index_solve = index_solve;
    slv.solve_type = solve_none;
    const auto i = static_cast<std::size_t>(index_solve);
    const block_text block{c.cf, c.cf.n_begin_solve[i], c.cf.n_end_solve[i]};

    const std::vector<output_block> outputs = find_output_blocks(slv, block);
    reading(block.begin, [&] { read_solve_type(slv, block); });
    read_cards(slv, c, flags, block, outputs);
    check_block(slv, c, flags);
}

std::vector<std::string_view> solve_type_words() {
    std::vector<std::string_view> list;
    for (const type_word& t : type_words) list.push_back(t.word);
    return list;
}

std::vector<std::string_view> solve_card_words() {
    std::vector<std::string_view> list;
    for (const card& k : cards) list.push_back(k.word);
    return list;
}

std::vector<std::string_view> solve_block_words() {
    std::vector<std::string_view> list = {"solve_type", "file", "filename", "initialize", "previous"};
    for (const type_word& t : type_words) list.push_back(t.word);
    for (const card& k : cards) list.push_back(k.word);
    for (const method_word& m : method_words()) list.push_back(m.word);
    add_directive_words(list);
    add_output_words(list);
    return list;
}
