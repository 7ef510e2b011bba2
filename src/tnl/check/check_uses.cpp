#include "tnl/check/check_uses.h"

namespace cli {

used_names names_used(const checked_deck& d, std::vector<std::string> element_type::*terminals) {
    used_names names;
    for (int i = 0; i < static_cast<int>(d.elements.size()); ++i) {
        const deck_element& e = d.elements[static_cast<std::size_t>(i)];
        if (e.is_placeholder) continue;
        if (e.type == nullptr) {
            names.unsure = true;
            continue;
        }
        for (const std::string& word : e.type->*terminals) {
            int at = 0;
            const std::string name = d.value(e, word, &at);
            const bool writes = has(e.type->driven, word);
            const bool reads = terminals == &element_type::digital ? has(e.type->reads, word) : !writes;
            if (!name.empty()) names.of[name].push_back({i, {e.statement, at}, writes, reads});
        }
    }
    return names;
}

}  // namespace cli
