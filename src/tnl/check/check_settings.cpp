// Words of `method:` that contradict each other, or the circuit: the simulator refuses them when it reads the block.
#include <algorithm>

#include "settings/method_words.h"
#include "tnl/check/check_deck.h"

namespace cli {

namespace {

class setting_checks {
public:
    setting_checks(checked_deck& d, const solve_section& s, const std::map<std::string, method_value>& given)
        : d_(d), s_(s), given_(given) {}

    void run() {
        check_tests();
        check_damping();
        if (s_.type == "trns") check_steps();
    }

private:
    const method_value* at(const char* word) const {
        const auto found = given_.find(word);
        return found == given_.end() ? nullptr : &found->second;
    }
    bool on(const char* word) const { return at(word) != nullptr && at(word)->text == "yes"; }
    // NaN: a constant of the deck.
    double number(const char* word) const {
        if (const method_value* v = at(word)) return v->value;
        for (const method_word& m : method_words())
            if (m.word == word) return m.dflt;
        return NAN;
    }
    void refuse(const char* word, const std::string& text, const std::string& advice = "") {
        if (const method_value* v = at(word)) d_.report.error("bad-setting", v->at, text, advice);
    }
    // The first element of which this holds; nullptr: none.
    const deck_element* first_element(bool element_type::*what) const {
        for (const deck_element& e : d_.elements)
            if (e.type != nullptr && e.type->*what) return &e;
        return nullptr;
    }

    // Of convergence. Without a word about them, one is on.
    void check_tests() {
        const char* const only[] = {"chk_only_rhs2", "chk_only_delx_volt", "chk_only_spice"};
        const auto n_only = std::count_if(std::begin(only), std::end(only), [&](const char* w) { return on(w); });
        if (n_only > 1)
            for (const char* word : only)
                if (on(word)) return refuse(word, "more than one chk_only_ word is on", "leave one");
        if (n_only > 0 || first_element(&element_type::nonlinear) == nullptr) return;
        if (on("chk_delx_sprt")) {
            if (!on("chk_delx_volt") && !on("chk_delx_kcl"))
                refuse("chk_delx_sprt", "chk_delx_sprt needs chk_delx_volt or chk_delx_kcl");
            return;
        }
        for (const char* word : {"chk_rhs2", "chk_rhs2_rel", "chk_rhsinf", "chk_delx_all", "chk_spice"})
            if (on(word) || (at(word) == nullptr && is_default_test(word))) return;
        for (const char* word : {"chk_spice", "chk_rhs2"})
            if (at(word) != nullptr)
                return refuse(word, "no test tells when the iteration has converged", "chk_spice=yes or chk_rhs2=yes");
    }
    bool is_default_test(std::string_view word) const {
        const bool electrical = std::any_of(d_.elements.begin(), d_.elements.end(), [](const deck_element& e) {
            return !e.is_placeholder && library_forms[e.library].statement == "eelement";
        });
        return word == (electrical ? "chk_spice" : "chk_rhs2");
    }

    void check_damping() {
        if (at("dmp_k") != nullptr && at("dmp_k2") == nullptr) return;  // the second pair follows the first
        if (number("dmp_newt_max2") < number("dmp_newt_max"))
            refuse(at("dmp_newt_max2") != nullptr ? "dmp_newt_max2" : "dmp_newt_max",
                   "dmp_newt_max2 is below dmp_newt_max (they are 50 if not given)");
        if (number("dmp_k") < number("dmp_k2")) refuse("dmp_k2", "dmp_k2 is above dmp_k (they are 0.2 if not given)");
    }

    void check_steps() {
        if (const deck_element* e = first_element(&element_type::limits_step); e != nullptr && on("gear2_fixed"))
            refuse("gear2_fixed",
                   "gear2_fixed has steps of one length, and " + e->name + " (" + e->type->name + ") changes them",
                   "gear2, trapezoidal or back_euler");
        if (on("constant_step") && !on("back_euler") && !on("trapezoidal"))
            refuse("constant_step", "constant_step goes with back_euler or trapezoidal alone");
        const bool shortens = on("trbdf2") || on("back_euler_auto") || on("trapezoidal_auto");
        if (shortens && number("fctr_stepred") >= 1) refuse("fctr_stepred", "fctr_stepred must be below 1");
        if (!on("trbdf2")) return;
        if (number("trbdf2_tolr") <= 0) refuse("trbdf2_tolr", "trbdf2_tolr must be above 0");
        if (number("trbdf2_gamma") <= 0 || number("trbdf2_gamma") >= 1)
            refuse("trbdf2_gamma", "trbdf2_gamma must lie between 0 and 1");
    }

    checked_deck& d_;
    const solve_section& s_;
    const std::map<std::string, method_value>& given_;
};

}  // namespace

void check_settings(checked_deck& d, const solve_section& s, const std::map<std::string, method_value>& given) {
    setting_checks(d, s, given).run();
}

}  // namespace cli
