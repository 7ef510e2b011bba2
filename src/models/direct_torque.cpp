#include "models/direct_torque.h"

#include <cmath>

#include "base/flags_class.h"

int user_f_dtc_1(int flux, int torque, int sector) {
    // Ahead of the flux by 60 degrees a vector raises both, by 120 degrees it raises the torque and lowers the flux.
    // Vectors without voltage alternate from sector to sector, so that one leg alone has to switch.
    if (torque == 0) return (sector % 2 == 1) == (flux == 1) ? 7 : 0;
    const int turn = torque * (flux == 1 ? 1 : 2);
    return (sector - 1 + turn + 6) % 6 + 1;
}

int flux_sector(double th) {
    constexpr double sixth = 1.0471975511965976;  // pi/3
    const double n = std::fmod(std::floor(th / sixth + 0.5), 6.0);
    if (std::isnan(n)) return 1;  // an angle that is none has no sector either
    return 1 + static_cast<int>(n < 0.0 ? n + 6.0 : n);
}

bool leg_is_high(int vector, int leg) {
    constexpr bool high[8][3] = {{false, false, false}, {true, false, false}, {true, true, false}, {false, true, false},
                                 {false, true, true},   {false, false, true}, {true, false, true}, {true, true, true}};
    return high[vector & 7][leg];
}

void direct_torque::begin(int flux, int torque) const {
    s[0] = flux;
    s[1] = torque;
    s[2] = no_vector;
}

void direct_torque::take(int flux, int torque, double th, flags_class* flags) const {
    const double next = user_f_dtc_1(flux, torque, flux_sector(th));
    if (next != s[2]) flags->tell_event(-1.0, 0.0, false);  // there, and it acts from there on
    s[0] = flux;
    s[1] = torque;
    s[2] = next;
}

int direct_torque::vector(int flux, int torque, double th, const flags_class* flags) const {
    if (flags->trns && s[2] >= 0.0) return static_cast<int>(s[2]);
    return user_f_dtc_1(flux, torque, flux_sector(th));
}

int torque_comparators::flux(double error, int now) const {
    if (error > band_f) return 1;
    return error < -band_f ? 0 : now;
}

int torque_comparators::torque(double error, int now) const {
    if (error > band_t) return 1;
    if (error < -band_t) return -1;
    return three_levels && error * now <= 0.0 ? 0 : now;
}
