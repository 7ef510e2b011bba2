#include "models/algebra_functions.h"

#include "base/halt.h"

void check_levels(const char* file, double x_low, double x_high) {
    if (!(x_low < x_high))
        halt({line(file, ": x_high=", x_high), line(file, ": x_low=", x_low),
              "  x_high must be above x_low. Halting..."});
}
