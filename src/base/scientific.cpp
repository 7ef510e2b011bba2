#include "base/scientific.h"

#include <array>
#include <bit>
#include <cstdint>
#include <cstring>

namespace {
using u64 = std::uint64_t;
using u128 = unsigned __int128;

// 10^k = (mantissa + d) * 2^(exponent - 63) with 0 <= d < 1 and a little, mantissa having its top bit set.
struct power_of_ten {
    u64 mantissa = 0;
    int exponent = 0;
};
constexpr int min_power = -36, max_power = 48;
using power_table = std::array<power_of_ten, max_power - min_power + 1>;

// With 128 bits, powers up to 10^55 are exact, and the others lose at most three units a step.
constexpr power_table make_powers() {
    constexpr u128 one = static_cast<u128>(1) << 127;
    power_table table{};
    auto set = [&](int k, u128 m, int e) {
        table[static_cast<std::size_t>(k - min_power)] = {static_cast<u64>(m >> 64), e};
    };
    u128 m = one;
    int e = 0;
    for (int k = 0; k <= max_power; ++k) {
        set(k, m, e);
        const u128 up = m + (m >> 2);  // times 10/8; 10/16 where that has no room
        const bool carry = up < m;
        m = carry ? (m >> 1) + (m >> 3) : up;
        e += carry ? 4 : 3;
    }
    m = one;
    e = 0;
    for (int k = 0; k >= min_power; --k) {
        set(k, m, e);
        m /= 5;
        --e;
        for (; !(m & one); --e) m <<= 1;
    }
    return table;
}
constexpr power_table powers = make_powers();

constexpr std::array<char, 200> make_pairs() {
    std::array<char, 200> text{};
    for (std::size_t i = 0; i < 100; ++i) {
        text[2 * i] = static_cast<char>('0' + i / 10);
        text[2 * i + 1] = static_cast<char>('0' + i % 10);
    }
    return text;
}
constexpr std::array<char, 200> pairs = make_pairs();

void put_pair(char* to, unsigned i) { std::memcpy(to, &pairs[2 * i], 2); }

// A binary number x = mantissa * 2^(exponent - 63) times 10^k: whole part, and what stands behind the point.
struct scaled {
    u64 whole;
    u128 fraction, half;
};
scaled times_power(u64 mantissa, int exponent, int k) {
    const power_of_ten& p = powers[static_cast<std::size_t>(k - min_power)];
    const int shift = 126 - (exponent + p.exponent);
    const u128 product = static_cast<u128>(mantissa) * p.mantissa;
    const u128 one = static_cast<u128>(1) << shift;
    return {static_cast<u64>(product >> shift), product & (one - 1), one >> 1};
}

// Seven digits and the decimal exponent of x: about digits * 10^(exponent - 6).
struct decimal {
    unsigned digits;
    int exponent;
};
bool find_decimal(u64 bits, decimal& d) {
    if (bits == 0) {
        d = {0, 0};
        return true;
    }
    const int exponent = static_cast<int>(bits >> 52) - 1023;
    if (exponent < -132 || exponent > 132) return false;
    const u64 mantissa = (bits << 11) | (u64{1} << 63);
    d.exponent = (exponent * 78913) >> 18;  // of the power of two below x: that of x, or one less
    scaled v = times_power(mantissa, exponent, 6 - d.exponent);
    if (v.whole >= 10000000) v = times_power(mantissa, exponent, 6 - ++d.exponent);

    // The product is short of the true one by less than this.
    constexpr u128 error = static_cast<u128>(1) << 65;
    if (v.fraction <= v.half && v.fraction + error >= v.half) return false;
    d.digits = static_cast<unsigned>(v.whole) + (v.fraction > v.half ? 1 : 0);
    if (d.digits == 10000000) {
        d.digits = 1000000;
        ++d.exponent;
    }
    return true;
}
}  // namespace

bool put_scientific(double x, char* to) {
    constexpr u64 sign = u64{1} << 63;
    const u64 bits = std::bit_cast<u64>(x);
    decimal d;
    if (!find_decimal(bits & ~sign, d)) return false;
    const unsigned tail = d.digits % 1000000;
    to[0] = bits & sign ? '-' : ' ';
    to[1] = static_cast<char>('0' + d.digits / 1000000);
    to[2] = '.';
    put_pair(to + 3, tail / 10000);
    put_pair(to + 5, tail / 100 % 100);
    put_pair(to + 7, tail % 100);
    to[9] = 'e';
    to[10] = d.exponent < 0 ? '-' : '+';
    put_pair(to + 11, static_cast<unsigned>(d.exponent < 0 ? -d.exponent : d.exponent));
    return true;
}
