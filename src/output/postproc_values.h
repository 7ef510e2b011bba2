// postproc_values.h -- what a signal comes to over a span of time: average, effective value, power, distortion.
#pragma once
#include <span>

// The signal x is given at the times t, s, which do not fall; all spans are of one length n. Of two points at one time
// the signal jumps there. The span of the average is t[n-1] - t[0]; with fewer than two points, or a span of 0, each
// of these is 0.
using samples = std::span<const double>;

// sum (x[i] + x[i+1])/2 (t[i+1] - t[i]) over the span; the unit of x. 0, 1, 0 at 0, 1, 2 s give 0.5.
double postproc_avg(samples t, samples x);
// The root of the average of x squared; the unit of x. The trapezoid stands on the squares: 0, 1 give sqrt(1/2), where
// the straight line between them has sqrt(1/3).
double postproc_rms(samples t, samples x);
// The average of the product x y; the product of their units. 0, 1 and 2, 4 at 0, 1 s give 2.
double postproc_pavg(samples t, samples x, samples y);

// Total harmonic distortion of x, whose fundamental period is the span: sqrt(h[2]^2 + ... + h[40]^2)/h[1] of the
// amplitudes h; a ratio without unit, 0 where h[1] is 0. The straight lines between the points are integrated exactly:
// with the slope s of a piece and u = w t, int x cos u dt = [x sin u/w + s cos u/w^2] and
// int x sin u dt = [-x cos u/w + s sin u/w^2]. sin(2 pi t) + 0.3 sin(6 pi t + 0.4) over 1 s gives 0.3.
double postproc_thd(samples t, samples x);
