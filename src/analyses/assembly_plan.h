// assembly_plan.h -- which units are called where, where what they give is added, and what of it stands.
#pragma once
#include <cstring>
#include <vector>

#include "analyses/mat_class.h"
#include "analyses/sums.h"

// What is fetched of the functions of some electrical units behind their calls.
struct function_moves {
    value_moves locv, current;  // to local variables, to terminal currents
    std::vector<int> ddt;       // KCL derivatives of these units
};

// How the present system is put together. Entries of the matrix that pure units alone add to stand as long as the
// method's constant does; of another entry the sum up to the first unit that is not pure does.
class assembly_plan {
public:
    int layout = -1;  // the mat.layout that it was made for
    function_moves of_held, of_others, of_left_out, of_with_ddt;
    // Derivatives as the models gave them last; behind them those that are scaled or negated, 1, and minus the method's
    // constant.
    std::vector<double> d;
    value_moves scaled, scaled_changing, negated, negated_changing;
    standing_sums<double> entries;  // [nnz] over d
    // Sums of functions: the functions of electrical units with the totals of those with a derivative behind them.
    std::vector<int> row;         // [rows of several units]
    sum_rows rows;                // [row]
    bool shows_currents = false;  // some file shows a terminal current

    // Whether d has the derivatives of the pure units for this block, and val_m their sums for a constant of the
    // method, 1/s.
    bool derivatives_stand() const { return stand_; }
    bool sums_stand(double constant) const { return stand_ && constant_ == constant; }
    void keep_values(bool stand, double constant) {
        stand_ = stand;
        constant_ = constant;
    }
    void forget_values() { stand_ = false; }

private:
    bool stand_ = false;
    double constant_ = 0.0;
};

// The variables that the arguments of electrical units were formed of last, and whether the held and the curved units
// were called for them. Nothing is kept until somebody says that nobody else writes arguments.
class formed_arguments {
public:
    void keep() { kept_ = true; }
    void forget() { *this = formed_arguments{}; }
    bool stand_for(const std::vector<double>& val_nd, const std::vector<double>& aux,
                   const std::vector<double>& val_vr) const {
        return valid_ && same(val_nd_, val_nd) && same(aux_, aux) && same(val_vr_, val_vr);
    }
    // Arguments are formed of these variables.
    void form_for(const std::vector<double>& val_nd, const std::vector<double>& aux, const std::vector<double>& val_vr);
    void forget_variables() { valid_ = false; }  // somebody has written arguments

    bool held_stand() const { return of_held_ == version_; }
    void keep_held() { of_held_ = version_; }
    // Of curved units the conductance across junctions is an argument, too.
    bool curved_stand(double gmin, bool with_derivatives) const {
        return (with_derivatives ? of_curved_whole_ : of_curved_) == version_ && gmin_ == gmin;
    }
    void keep_curved(double gmin, bool with_derivatives) {
        of_curved_ = version_;
        of_curved_whole_ = with_derivatives ? version_ : -1;
        gmin_ = gmin;
    }
    void forget_calls() { of_held_ = of_curved_ = of_curved_whole_ = -1; }
    long version() const { return version_; }  // counts the changes

private:
    static bool same(const std::vector<double>& a, const std::vector<double>& b) {
        return a.size() == b.size() && (a.empty() || std::memcmp(a.data(), b.data(), a.size() * sizeof(double)) == 0);
    }
    bool kept_ = false, valid_ = false;
    long version_ = 0;
    // The versions that units were called for; of curved ones also that for their derivatives.
    long of_held_ = -1, of_curved_ = -1, of_curved_whole_ = -1;
    double gmin_ = 0.0;
    std::vector<double> val_nd_, aux_, val_vr_;
};
