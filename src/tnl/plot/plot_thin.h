// plot_thin.h -- long curves made short without a visible change.
#pragma once
#include <functional>
#include <vector>

#include "tnl/plot/plot_axis.h"

namespace cli {

// Takes the points of a curve in their order. Neighbours that fall into the same of n_bins columns of the axis become
// at most four points, in their order: the first, the least, the greatest and the last. So no spike is lost, and a
// curve along the axis keeps at most 4 n_bins points. Points that are not finite, or that the x axis cannot show, are
// gaps: one point with y = nan stands for them, where a column begins or ends with a gap.
class thinner {
public:
    thinner(const axis& x_axis, int n_bins) : x_(x_axis), n_bins_(n_bins) {}
    void add(double x, double y);
    void break_line();  // between the points before and behind
    void finish();
    std::vector<double> x, y;  // the result, complete behind finish()

private:
    struct point {
        double x, y;
        long long order;
    };
    void flush();
    void gap();
    axis x_;
    int n_bins_;
    int bin_ = -1;       // of the open column; -1 none
    bool open_ = false;  // first_, least_, most_, last_ hold points
    bool ends_in_gap_ = false;
    long long order_ = 0;
    point first_{}, least_{}, most_{}, last_{};
};

// For curves that run to and fro (one quantity over another): lines between cells of a grid that are joined already are
// left out. When more than n_most points remain on any grid that a picture could tell from the curve, the curve has
// filled an area: lines along x then cover the cells that it went through.
void drop_retraced(const axis& x_axis, const axis& y_axis, std::size_t n_most, std::vector<double>& x,
                   std::vector<double>& y);

// Marks the points that a line through the marked ones would miss by more than far (Ramer, Douglas and Peucker).
// Points [begin, end) are finite.
std::vector<bool> bends(const std::vector<double>& x, const std::vector<double>& y, std::size_t begin, std::size_t end,
                        double far);

}  // namespace cli
