#include "sparse/knuth_write.h"

#include <fstream>
#include <iostream>

#include "sparse/arithmetic.h"

namespace {

using std::size_t;

std::ofstream open(const std::string& name) {
    std::ofstream out(name);
    out.precision(10);
    return out;
}

template <class T>
void write_dense(std::ostream& out, int n_row, int n_col, int m_col, const T* a) {
    for (int i = 0; i < n_row; ++i) {
        for (int j = 0; j < n_col; ++j)
            out << (j ? " " : "") << a[static_cast<size_t>(i) * static_cast<size_t>(m_col) + static_cast<size_t>(j)];
        out << '\n';
    }
}

template <class T>
void write_knuth(std::ostream& out, const knuth<T>& k, bool values) {
    out << "n_row = " << k.n_row << ", n_col = " << k.n_col << ", nnz = " << k.nnz() << '\n';
    for (size_t s = 0; s < k.row.size(); ++s) {
        out << "k = " << s << ", row = " << k.row[s] << ", col = " << k.col[s] << ", prow = " << k.prow[s]
            << ", pcol = " << k.pcol[s];
        if (values) out << ", val = " << k.val[s];
        out << '\n';
    }
    for (size_t i = 0; i < k.srow.size(); ++i)
        out << "i_row = " << i << ", srow = " << k.srow[i] << ", erow = " << k.erow[i] << '\n';
    for (size_t j = 0; j < k.scol.size(); ++j)
        out << "i_col = " << j << ", scol = " << k.scol[j] << ", ecol = " << k.ecol[j] << '\n';
}

template <class T>
void write_knuth_dense(std::ostream& out, const knuth<T>& k) {
    std::vector<T> full(static_cast<size_t>(k.n_col));
    for (const int first : k.srow) {
        full.assign(full.size(), T(0));
        for (int e = first; e != -1; e = k.prow[static_cast<size_t>(e)])
            full[static_cast<size_t>(k.col[static_cast<size_t>(e)])] = k.val[static_cast<size_t>(e)];
        write_dense(out, 1, k.n_col, k.n_col, full.data());
    }
}

template <class T>
void write_vector(std::ostream& out, int n, const T* v) {
    for (int i = 0; i < n; ++i) out << i << ' ' << v[i] << '\n';
}

}  // namespace

template <class T>
void mat_write_ij(int n_row, int n_col, int m_col, const T* a, const std::string& name) {
    std::ofstream out = open(name);
    write_dense(out, n_row, n_col, m_col, a);
}
template <class T>
void mat_write_ij_console(int n_row, int n_col, int m_col, const T* a) {
    write_dense(std::cout, n_row, n_col, m_col, a);
}
template <class T>
void mat_write_knuth(const knuth<T>& k, const std::string& name) {
    std::ofstream out = open(name);
    write_knuth(out, k, true);
}
template <class T>
void mat_write_knuth_console(const knuth<T>& k) {
    write_knuth(std::cout, k, true);
}
template <class T>
void mat_write_knuth_console_1(const knuth<T>& k) {
    write_knuth(std::cout, k, false);
}
template <class T>
void mat_write_knuth_ij(const knuth<T>& k, const std::string& name) {
    std::ofstream out = open(name);
    write_knuth_dense(out, k);
}
template <class T>
void mat_write_knuth_ij_console(const knuth<T>& k) {
    write_knuth_dense(std::cout, k);
}

template <class T>
void mat_write_knuthij1(const knuth<T>& k, const std::string& name) {
    std::ofstream out = open(name);
    for (size_t i = 0; i < k.srow.size(); ++i)
        for (int e = k.srow[i]; e != -1; e = k.prow[static_cast<size_t>(e)])
            out << i << ' ' << k.col[static_cast<size_t>(e)] << ' ' << k.val[static_cast<size_t>(e)] << '\n';
}

template <class T>
void mat_write_colcompressed(int n_row, const std::vector<int>& cc_cn, const std::vector<int>& cc_row_index,
                             const std::vector<T>& cc_val, const std::string& name) {
    std::ofstream out = open(name);
    out << "n_row = " << n_row << ", n_col = " << cc_cn.size() - 1 << ", nnz_cc = " << cc_val.size() << '\n';
    for (const int c : cc_cn) out << c << '\n';
    for (size_t k = 0; k < cc_val.size(); ++k) out << cc_row_index[k] << ' ' << cc_val[k] << '\n';
}

template <class T>
void vector_write(int n, const T* v, const std::string& name) {
    std::ofstream out = open(name);
    write_vector(out, n, v);
}
template <class T>
void vector_write_console(int n, const T* v) {
    write_vector(std::cout, n, v);
}

template <class T>
bool mat_read(int& n_row, int& n_col, int m_row, int m_col, T* a, const std::string& name) {
    std::ifstream in(name);
    if (!(in >> n_row >> n_col) || n_row < 0 || n_col < 0 || n_row > m_row || n_col > m_col) return false;
    for (int i = 0; i < n_row; ++i)
        for (int j = 0; j < n_col; ++j)
            if (!(in >> a[static_cast<size_t>(i) * static_cast<size_t>(m_col) + static_cast<size_t>(j)])) return false;
    return true;
}

template <class T>
bool vector_read(int& n, int m, T* v, const std::string& name) {
    std::ifstream in(name);
    if (!(in >> n) || n < 0 || n > m) return false;
    for (int i = 0; i < n; ++i)
        if (!(in >> v[i])) return false;
    return true;
}

template <class T>
void generate_rhs(int n_row, int n_col, int m_col, const T* a, const T* x, T* rhs) {
    for (int i = 0; i < n_row; ++i) {
        rhs[i] = T(0);
        for (int j = 0; j < n_col; ++j)
            rhs[i] += product(a[static_cast<size_t>(i) * static_cast<size_t>(m_col) + static_cast<size_t>(j)], x[j]);
    }
}

#define INSTANTIATE(T)                                                                           \
    template void mat_write_ij(int, int, int, const T*, const std::string&);                     \
    template void mat_write_ij_console(int, int, int, const T*);                                 \
    template void mat_write_knuth(const knuth<T>&, const std::string&);                          \
    template void mat_write_knuth_console(const knuth<T>&);                                      \
    template void mat_write_knuth_console_1(const knuth<T>&);                                    \
    template void mat_write_knuth_ij(const knuth<T>&, const std::string&);                       \
    template void mat_write_knuth_ij_console(const knuth<T>&);                                   \
    template void mat_write_knuthij1(const knuth<T>&, const std::string&);                       \
    template void mat_write_colcompressed(int, const std::vector<int>&, const std::vector<int>&, \
                                          const std::vector<T>&, const std::string&);            \
    template void vector_write(int, const T*, const std::string&);                               \
    template void vector_write_console(int, const T*);                                           \
    template bool mat_read(int&, int&, int, int, T*, const std::string&);                        \
    template bool vector_read(int&, int, T*, const std::string&);                                \
    template void generate_rhs(int, int, int, const T*, const T*, T*);
INSTANTIATE(double)
INSTANTIATE(std::complex<double>)
