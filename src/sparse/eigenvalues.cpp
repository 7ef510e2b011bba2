#include "sparse/eigenvalues.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "sparse/arithmetic.h"

namespace {
using complex = std::complex<double>;
constexpr double eps = std::numeric_limits<double>::epsilon();

template <class T>
struct square {
    int n;
    std::vector<T> value;
    T& operator()(int i, int j) {
        return value[static_cast<std::size_t>(i) * static_cast<std::size_t>(n) + static_cast<std::size_t>(j)];
    }
};

// Rows and columns of a state come to like sizes, whatever its unit is.
void balance(square<double>& a) {
    bool changed = true;
    for (int pass = 0; changed && pass < 100; ++pass) {
        changed = false;
        for (int i = 0; i < a.n; ++i) {
            double row = 0.0, col = 0.0;
            for (int j = 0; j < a.n; ++j) {
                if (j == i) continue;
                row += std::fabs(a(i, j));
                col += std::fabs(a(j, i));
            }
            if (row == 0.0 || col == 0.0) continue;
            const int power = static_cast<int>(std::floor(0.5 * std::log2(row / col) + 0.5));
            if (power == 0) continue;
            const double f = std::ldexp(1.0, power);
            if (!(row / f + col * f < 0.95 * (row + col))) continue;
            changed = true;
            for (int j = 0; j < a.n; ++j) a(i, j) /= f;
            for (int j = 0; j < a.n; ++j) a(j, i) *= f;
        }
    }
}

// Reflections make zeros below the first lower diagonal.
void to_hessenberg(square<double>& a) {
    std::vector<double> v(static_cast<std::size_t>(a.n));
    const auto at_v = [&](int i) -> double& { return v[static_cast<std::size_t>(i)]; };
    for (int k = 0; k + 2 < a.n; ++k) {
        double length = 0.0;
        for (int i = k + 1; i < a.n; ++i) length = std::hypot(length, a(i, k));
        if (length == 0.0) continue;
        const double first = a(k + 1, k) > 0 ? -length : length;
        double norm = 0.0;
        for (int i = k + 1; i < a.n; ++i) at_v(i) = a(i, k);
        at_v(k + 1) -= first;
        for (int i = k + 1; i < a.n; ++i) norm += at_v(i) / length * (at_v(i) / length);
        if (norm == 0.0) continue;
        const double factor = 2.0 / norm / length / length;
        for (int j = k; j < a.n; ++j) {
            double sum = 0.0;
            for (int i = k + 1; i < a.n; ++i) sum += at_v(i) * a(i, j);
            for (int i = k + 1; i < a.n; ++i) a(i, j) -= factor * sum * at_v(i);
        }
        for (int i = 0; i < a.n; ++i) {
            double sum = 0.0;
            for (int j = k + 1; j < a.n; ++j) sum += a(i, j) * at_v(j);
            for (int j = k + 1; j < a.n; ++j) a(i, j) -= factor * sum * at_v(j);
        }
        a(k + 1, k) = first;
        for (int i = k + 2; i < a.n; ++i) a(i, k) = 0.0;
    }
}

// Of the last two rows, the eigenvalue that is nearer to the last entry.
complex shift_of(square<complex>& h, int last) {
    const complex a = h(last - 1, last - 1), b = h(last - 1, last), c = h(last, last - 1), d = h(last, last);
    const complex half = 0.5 * (a - d), root = std::sqrt(product(half, half) + product(b, c));
    const complex sum = magnitude(half + root) > magnitude(half - root) ? half + root : half - root;
    return magnitude(sum) == 0.0 ? d : d - quotient(product(b, c), sum);
}

// One step on rows and columns first to last, which stand alone.
void qr_step(square<complex>& h, int first, int last, complex shift) {
    std::vector<complex> cosine(static_cast<std::size_t>(last - first)), sine(cosine.size());
    for (int i = first; i <= last; ++i) h(i, i) -= shift;
    for (int k = first; k < last; ++k) {
        const double length = std::hypot(magnitude(h(k, k)), magnitude(h(k + 1, k)));
        complex& c = cosine[static_cast<std::size_t>(k - first)];
        complex& s = sine[static_cast<std::size_t>(k - first)];
        c = length == 0.0 ? complex(1.0) : h(k, k) / length;
        s = length == 0.0 ? complex(0.0) : h(k + 1, k) / length;
        for (int j = k; j <= last; ++j) {
            const complex x = h(k, j), y = h(k + 1, j);
            h(k, j) = product(std::conj(c), x) + product(std::conj(s), y);
            h(k + 1, j) = product(c, y) - product(s, x);
        }
    }
    for (int k = first; k < last; ++k) {
        const complex c = cosine[static_cast<std::size_t>(k - first)], s = sine[static_cast<std::size_t>(k - first)];
        for (int i = first; i <= std::min(k + 2, last); ++i) {
            const complex x = h(i, k), y = h(i, k + 1);
            h(i, k) = product(x, c) + product(y, s);
            h(i, k + 1) = product(y, std::conj(c)) - product(x, std::conj(s));
        }
    }
    for (int i = first; i <= last; ++i) h(i, i) += shift;
}
}  // namespace

std::vector<std::complex<double>> eigenvalues(std::vector<double> a, int n) {
    if (std::any_of(a.begin(), a.end(), [](double x) { return !std::isfinite(x); })) return {};
    square<double> real{n, std::move(a)};
    balance(real);
    to_hessenberg(real);
    square<complex> h{n, std::vector<complex>(real.value.begin(), real.value.end())};
    double largest = 0.0;
    for (double x : real.value) largest = std::max(largest, std::fabs(x));
    std::vector<complex> found;
    int steps = 0;
    for (int last = n - 1; last >= 0;) {
        int first = last;
        while (first > 0 &&
               magnitude(h(first, first - 1)) >
                   eps * (magnitude(h(first, first)) + magnitude(h(first - 1, first - 1)) + 1e-3 * largest))
            --first;
        if (first > 0) h(first, first - 1) = 0.0;
        if (first == last) {
            found.push_back(h(last, last));
            --last;
            steps = 0;
            continue;
        }
        if (++steps > 200) return {};
        // From time to time another shift, against a circle of equal ones.
        const bool other = steps % 10 == 0;
        qr_step(h, first, last,
                other ? complex(magnitude(h(last, last - 1)) + magnitude(h(last, last))) : shift_of(h, last));
    }
    std::sort(found.begin(), found.end(), [](const complex& x, const complex& y) {
        const double of_x = magnitude(x), of_y = magnitude(y);
        return of_x != of_y ? of_x > of_y : x.imag() > y.imag();
    });
    return found;
}
