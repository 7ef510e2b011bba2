#include "tnl/elements/element_search.h"

#include <algorithm>
#include <cctype>
#include <fstream>

#include "tnl/common/text.h"

namespace cli {

namespace {

// Words of a text, in lower case: letters, digits and '_'. A word with '_' counts with its pieces, too.
std::vector<std::string> pieces(std::string_view text) {
    std::vector<std::string> all;
    std::string word;
    const auto end_word = [&] {
        if (word.empty()) return;
        all.push_back(word);
        if (word.find('_') != std::string::npos)
            for (const std::string& piece : split(word, '_')) all.push_back(piece);
        word.clear();
    };
    for (const char c : lower(text)) {
        if (std::isalnum(static_cast<unsigned char>(c)) != 0 || c == '_')
            word += c;
        else
            end_word();
    }
    end_word();
    return all;
}

bool is_plural(std::string_view many, std::string_view one) {
    return one.size() > 2 && many.size() == one.size() + 1 && many.starts_with(one) && many.back() == 's';
}

// alone: the word is all that is looked for. One of several, and one of two letters, must begin the word that it is a
// part of: "low" and "pass" are in "below" and "passive".
answer answer_of_word(const std::vector<std::string>& known, std::string_view all_text, std::string_view word,
                      bool alone) {
    bool begins = false;
    for (const std::string& k : known) {
        if (k == word || is_plural(k, word) || is_plural(word, k)) return answer::whole;
        begins = begins || k.starts_with(word);
    }
    if (alone && word.size() > 2) begins = all_text.find(word) != std::string_view::npos;
    return begins ? answer::part : answer::none;
}

answer answer_of_text(std::string_view name, const std::string& text, std::string_view words) {
    const std::string wanted(trimmed(lower(words)));
    if (wanted.empty()) return answer::whole;
    if (lower(name) == wanted) return answer::name;
    const std::string all_text = lower(text);
    const std::vector<std::string> known = pieces(all_text);
    answer worst = answer::whole;
    bool one_whole = false;
    const std::vector<std::string> asked = split(wanted, ' ');
    for (const std::string& word : asked) {
        // "dead-time" is two words of a description, and so is its hyphen of no account.
        const std::vector<std::string> parts = pieces(word);
        answer of_word = answer_of_word(known, all_text, word, asked.size() == 1);
        if (of_word != answer::whole && parts.size() > 1 && word.find('_') == std::string::npos) {
            of_word = answer::whole;
            for (const std::string& p : parts) of_word = std::min(of_word, answer_of_word(known, all_text, p, false));
        }
        one_whole = one_whole || of_word == answer::whole;
        worst = std::min(worst, of_word);
    }
    if (worst == answer::none && asked.size() > 1 && all_text.find(wanted) != std::string::npos) return answer::part;
    return worst == answer::none && one_whole ? answer::some : worst;
}

}  // namespace

answer answer_of(const element_sheet& sheet, std::string_view words) {
    std::string text = sheet.name + " " + sheet.group;
    for (const std::string& line : sheet.description) text += " " + line;
    return answer_of_text(sheet.name, text, words);
}

search_result search(const std::vector<element_sheet>& sheets, std::string_view words) {
    search_result found;
    for (const answer wanted : {answer::name, answer::whole, answer::part, answer::some})
        for (const element_sheet& s : sheets)
            if (answer_of(s, words) == wanted)
                (wanted == answer::part ? found.part : wanted == answer::some ? found.some : found.whole).push_back(s);
    if (!found.whole.empty() || !found.part.empty()) found.some.clear();
    return found;
}

std::vector<trade_part> parts_in(const std::filesystem::path& folder) {
    std::vector<trade_part> all;
    std::error_code no_folder;
    for (const auto& entry : std::filesystem::directory_iterator(folder, no_folder)) {
        if (entry.path().extension() != ".par") continue;
        trade_part part{entry.path(), "", "", ""};
        std::ifstream in(entry.path());
        for (std::string line; std::getline(in, line);) {
            // "# 1N4148: small-signal switching diode. Typical figures ..."
            if (part.text.empty() && line.starts_with("#")) {
                const std::size_t colon = line.find(": "), dot = line.find(". ");
                if (colon != std::string::npos) part.text = line.substr(colon + 2, dot - colon - 2);
            }
            if (!line.starts_with("emodel ")) continue;
            for (const std::string& word : split(line, ' ')) {
                if (word.starts_with("name=")) part.name = word.substr(5);
                if (word.starts_with("type=")) part.type = word.substr(5);
            }
        }
        if (!part.name.empty()) all.push_back(std::move(part));
    }
    std::sort(all.begin(), all.end(), [](const trade_part& a, const trade_part& b) { return a.name < b.name; });
    return all;
}

answer answer_of(const trade_part& part, std::string_view words) {
    return answer_of_text(part.name, part.name + " " + part.type + " " + part.text, words);
}

const std::vector<hint>& hints() {
    static const std::vector<hint> all = {
        {"zener,avalanche",
         "a Zener diode is a diode_rs with its breakdown voltage bv at the current ibv, bv_cont=1",
         {"diode_rs"}},
        {"noise,random",
         "there is no noise analysis; a random signal is a pwl_file that reads times and values from a file",
         {"pwl_file"}},
        {"low pass,lowpass,low-pass",
         "of first order it is lag_1, or filter_z0_p1; of second order filter_lp2",
         {"lag_1", "filter_z0_p1", "filter_lp2"}},
        {"high pass,highpass,high-pass",
         "of first order it is filter_z1_p1 with a0 = 0; of second order filter_hp2",
         {"filter_z1_p1", "filter_hp2"}},
        {"op amp,opamp,op-amp,operational amplifier",
         "it is a vcvs of a large gain, with a resistor and a capacitor behind it for its bandwidth",
         {"vcvs"}},
        {"lead lag,lead-lag,leadlag", "it is filter_z1_p1: (a0 + a1 s)/(b0 + b1 s)", {"filter_z1_p1"}},
        {"lead compensator,lag compensator", "it is filter_z1_p1: (a0 + a1 s)/(b0 + b1 s)", {"filter_z1_p1"}},
        {"deadtime,dead-time,dead time",
         "between gates it is the t_dead of leg_mosfet, leg_igbt, bridge_3ph_mosfet and bridge_3ph_igbt; a delay of a "
         "signal is delay_2",
         {"leg_mosfet", "leg_igbt", "bridge_3ph_mosfet", "bridge_3ph_igbt", "delay_2"}},
        {"zero-order hold,zero order hold,sample and hold",
         "at equal distances it is sampler1, where a clock rises sampler3, while an input is low sampler2",
         {"sampler1", "sampler2", "sampler3"}},
        {"derivative,differentiator",
         "of a signal it is ddt; with a lag filter_z1_p1 with a0 = 0",
         {"ddt", "filter_z1_p1"}},
        {"loop gain,bode",
         "it is an ac block: tnl new mine --from loop_gain; the mean of a converter is spdt_buck or spdt_boost",
         {"spdt_buck", "spdt_boost"}},
        {"saturation", "of a signal it is lmtr", {"lmtr"}},
    };
    return all;
}

const hint* find_hint(std::string_view words) {
    const std::string wanted(trimmed(lower(words)));
    for (const hint& h : hints())
        for (const std::string& name : split(h.words, ',')) {
            if (wanted == name || is_plural(wanted, name)) return &h;
            // "zener diode"
            const std::vector<std::string> asked = pieces(wanted), needed = pieces(name);
            if (!needed.empty() && std::all_of(needed.begin(), needed.end(), [&](const std::string& n) {
                    return std::find(asked.begin(), asked.end(), n) != asked.end();
                }))
                return &h;
        }
    return nullptr;
}

}  // namespace cli
