// voltage_limits.h -- how far a controlling voltage of a semiconductor may move from one Newton iterate to the next.
// (Nagel 1975, section on the limiting of junction voltages; Vladimirescu and Liu 1980.)
#pragma once

// Each changes its first argument, V, in place; v_old is the voltage of the iterate before, V.

// A pn junction whose critical voltage is 50 vt. At or below it nothing changes, nor within 2 vt of v_old.
void pnlimit(double& v_new, double vt, double v_old);

// The later form: the critical voltage v_crit, at least vt, is given, backward steps are held too, and every change
// adds 1 to n_limit.
void pnlimit_ngspice(double& v_new, double v_old, double vt, double v_crit, int& n_limit);

// Voltage between gate and source (or drain) of an FET of threshold v_to, V: steps grow with the overdrive, and the
// threshold is not jumped over.
void devfetlim3(double& v_new, double v_old, double v_to);

// Voltage between drain and source of an FET.
void devlimvds3(double& v_new, double v_old);
