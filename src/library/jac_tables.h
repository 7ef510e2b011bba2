// jac_tables.h -- the tables of partial derivatives of a template, all in one array.
#pragma once
#include <span>
#include <vector>

#include "library/basic_library.h"

// One object for each template; valid for that template alone. All tables stand in one array, `store`, and row pointers
// give models the form jac->dfdv[function][terminal]. Units of a template share it: read it right after the call.
template <class T>
struct jac_tables {
    using number = T;
    int n_f = 0;
    std::vector<number> store;   // all numbers
    std::vector<number*> rows;   // all row pointers: [tables][functions of the table]
    std::vector<int> var_kinds;  // [tables] kind of variable of each
    std::vector<int> first_row;  // [tables] its first row pointer

    jac_tables() = default;
    jac_tables(const jac_tables&) = delete;
    jac_tables(jac_tables&&) noexcept = default;

    // Index in store of the derivative of function j by variable m of a kind (var_kind); -1 for a kind without table.
    // Of functions of several sorts: in the last table of the kind.
    int offset(int kind, int j, int m) const;
};

// One table of a class Jac of derivatives: the variables that it has columns for, and where models find it.
template <class Jac>
struct jac_table {
    int kind;  // var_kind
    word_list library_lists::*variables;
    typename Jac::number** Jac::*table;
    int Jac::*n;  // number of columns; null: models have no use for it
    function_table basic_library::*functions = &basic_library::func;  // one row for each
};

// Sizes store and rows for the tables of entry e, and n_work numbers behind them; all zero.
template <class Jac>
void lay_tables(Jac& jac, const basic_library& lib, int e, std::span<const jac_table<Jac>> tables,
                std::size_t n_work = 0) {
    using number = typename Jac::number;
    jac.n_f = lib.func.n_func(e);
    std::size_t n = 0, n_rows = 0;
    for (const jac_table<Jac>& t : tables) {
        const int columns = (lib.list.*t.variables).count(e), n_f = (lib.*t.functions).n_func(e);
        if (t.n) jac.*t.n = columns;
        n += static_cast<std::size_t>(columns) * static_cast<std::size_t>(n_f);
        n_rows += static_cast<std::size_t>(n_f);
    }
    jac.store.assign(n + n_work, number{});
    jac.rows.assign(n_rows, nullptr);
    jac.var_kinds.clear();
    jac.first_row.clear();
    number** row = jac.rows.data();
    number* next = jac.store.data();
    for (const jac_table<Jac>& t : tables) {
        jac.*t.table = row;
        jac.var_kinds.push_back(t.kind);
        jac.first_row.push_back(static_cast<int>(row - jac.rows.data()));
        const int n_f = (lib.*t.functions).n_func(e);
        for (int j = 0; j < n_f; ++j, next += (lib.list.*t.variables).count(e)) *row++ = next;
    }
}
