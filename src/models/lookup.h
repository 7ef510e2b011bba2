// lookup.h -- values between the points of a data file: tables over axes of equal steps, curves of points.
#pragma once
#include "models/data_table.h"

struct flags_class;

inline constexpr int max_axes = 4;

// Of the axes of a look-up table: first, the value at the first point of each, and last, at its last point; end is
// last as a deck gives it, -1000 for "n - 1". All [axes]. Halts with the element file's name where an axis of more than
// one point ends where it begins.
void lookup_axes(const char* file, const data_table& table, const double* first, const double* end, double* last);

// Straight (multilinear) between the points, clamped outside. No search.
//   first, last  [axes] the values at the ends of each axis; last may be below first
//   x            [axes]
//   y            [table.n_y]
//   dydx         [table.n_y * axes] slopes, row by row, or null; 0 along an axis that is left
void lookup(const data_table& table, const double* first, const double* last, const double* x, double* y, double* dydx);

// Straight between the points (x, y) of a file, end values outside; at a jump the later value. dy: slope, 0 outside.
void curve_value(const data_table& table, double x, double& y, double& dy);

// The wave of a table of points over the time t; halts with "<file>: time loop did not end." for a time that is none.
double table_wave(const char* file, const data_table& table, double t);
// The answer of such a source under nexttime: its next corner.
void table_break(const data_table& table, flags_class* flags);

// Halts with "<file>: i_file=" and the unit's table unless it has one.
void check_table(const char* file, const data_tables& tables, int unit);
