#!/bin/sh
# Examples of small signals, measured: peaks, margins and bandwidths as their formulas have them. Arguments: the program, a
# folder to work in, the folder of the source tree.
arguments='tnl work source'
. "$(dirname -- "$0")/expect.sh"

run() { # example: a copy of it, run
    mkdir -p "$1"
    cp "$source/examples/$1"/*.in "$1"
    expect "$1 runs" 0 "$(status_of "$tnl" run "$1/deck.in")"
}
holds() { # example, claims: all of them
    name=$1
    shift
    expect "$name: $*" 0 "$(status_of "$tnl" assert "$name/deck.in" --file bode.dat "$@")"
}

# q = R / 2 ohm; the peak is q / sqrt(1 - 1/(4 q^2)) at f0 sqrt(1 - 1/(2 q^2)), f0 = 1/(2 pi sqrt(LC)) = 3183.0989 Hz, and
# the passages 3 dB below it are f0 sqrt(1 - 1/(2 q^2) -+ sqrt(1 - 1/(4 q^2)) / q). Rows are 2 % apart.
run lc_filter
cat >peaks.awk <<'END'
function near(x, y, part) { return (x - y) ^ 2 < (part * y) ^ 2 }
function root(x) { return sqrt(x) }
/^peak\(/ { peak[++n] = $(NF - 1) }
/^peak_freq\(/ { freq[++m] = $(NF - 1) }
/^q\(/ { quality[++k] = $NF }
END {
    good = n == 3 && m == 3 && k == 3
    for (i = 1; i <= 3; ++i) {
        q = i == 1 ? 2 : i == 2 ? 5 : 10
        middle = 1 - 1 / (2 * q * q)
        width = root(middle + root(1 - 1 / (4 * q * q)) / q) - root(middle - root(1 - 1 / (4 * q * q)) / q)
        good = good && near(peak[i], q / root(1 - 1 / (4 * q * q)), 2e-3)
        good = good && near(freq[i], 3183.0989 * root(middle), 1e-3)
        good = good && near(quality[i], root(middle) / width, 3e-3)
    }
    print good ? "good" : "wrong"
}
END
status_of "$tnl" measure lc_filter/deck.in --file bode.dat 'peak(vout)' 'peak_freq(vout)' 'q(vout)' >status.txt
grep -E '= (4|10|20)\]' out.txt | awk -f peaks.awk >seen.txt
expect 'peaks of the filter by their formula' good "$(cat seen.txt)"

# The crossing of 1, and of -180 degrees, of the loop gain written down by hand: 15940.43 Hz with 50.7992 degrees to spare,
# 59004.95 Hz with 13.42798 dB.
run loop_gain
holds loop_gain '15.930k < crossover(t) < 15.950k' '50.75 < phase_margin(t) < 50.85' '13.41 < gain_margin(t) < 13.45' \
    '58.9k < cross(phase(t), -180) < 59.1k'
expect 'the same of the curve in the complex plane' 0 "$(status_of "$tnl" assert loop_gain/deck.in --file nyquist.dat \
    '50.75 < phase_margin(t) < 50.85' '13.41 < gain_margin(t) < 13.45')"

# 5 mH and 20 uH behind 0.5 ohm; 40 uH behind 0.98 ohm.
run transformer_impedance
holds transformer_impedance '31.54 < imag(z_open, 1k) < 31.55' '25.0 < imag(z_short, 100k) < 25.2' \
    '0.96 < real(z_short, 100) < 0.98'

# |k s + ki| = |s^2 + k s + ki| at 2 pi f = sqrt(2 ki), for every k: f = 15.9155 Hz.
run locked_loop
holds locked_loop '15.90 < crossover(follows) < 15.93'

# q = 5, the band pass alone.
run state_variable
holds state_variable '4.995 < peak(bp) < 5.005' '999 < peak_freq(bp) < 1001' '4.95 < q(bp) < 5.05'

no_faults
