// toggles.h -- a level that changes at each of a list of times, repeated with a period.
#pragma once
#include "models/data_table.h"

struct flags_class;

// Low where a period begins; each time of the list, s from there, turns the level over. half_wave: the list is of half
// a period, and the other half has it with high and low exchanged. The times are lent.
struct toggle_list {
    int n = 0;
    const double* t = nullptr;  // [n] s, strictly ascending
    double t0 = 0.0;            // s, where a period begins
    double per = 0.0;           // s
    bool half_wave = false;

    double part() const { return half_wave ? 0.5 * per : per; }  // s, what the list is of
};
toggle_list toggles_of(const data_table& table, double t0, double per, bool half_wave);

// True if the period is above 0 and all times lie in their part of it, the end excluded. False for NaN.
bool toggles_in_order(const toggle_list& w);

// The level at time t; a time that is before a change by no more than its own rounding counts as the change.
bool toggle_high(const toggle_list& w, double t);

// The first change ahead of t, never the one that t stands on.
double toggle_next(const toggle_list& w, double t);
// The answer of a source under nexttime.
void toggle_break(const toggle_list& w, flags_class* flags);
