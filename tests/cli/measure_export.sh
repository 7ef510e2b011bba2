#!/bin/sh
# tnl measure, assert and export from outside; what they write is read by other programs where these are installed.
# Arguments: the program, a folder to work in, the folder of the source tree.
arguments='tnl work source'
. "$(dirname -- "$0")/expect.sh"
there_is() { command -v "$1" >/dev/null 2>&1; }
cr=$(printf '\r')

# A capacitor charged through a resistor: vout = 10 (1 - exp(-t / 1 ms)), i = 10 mA exp(-t / 1 ms).
cp "$source/examples/rc_step/deck.in" rc.in
expect 'a run' 0 "$(status_of "$tnl" run rc.in)"
expect 'measurements' 0 "$(status_of "$tnl" measure rc.in --file wave.dat 'at(vout, 5m)' 'max(i)' 'tau = cross(vout, 6.321206)' 'rise(vout, 10)' 'avg(vout)')"
awk 'function near(x, y) { return (x - y) ^ 2 < (2e-4 * y) ^ 2 }
     { value[$1] = $(NF - 1); unit[$1] = $NF }
     END { good = near(value["at(vout,"], 9.9326205) && near(value["max(i)"], 0.01) && near(value["tau"], 1e-3)
           good = good && near(value["rise(vout,"], 2.1972246e-3) && near(value["avg(vout)"], 8.0134759)
           print good ? "good" : "wrong", NR, unit["max(i)"], unit["tau"], unit["avg(vout)"] }' out.txt >seen.txt
expect 'are those of the formula, in their units' 'good 5 A s V' "$(cat seen.txt)"
expect 'a column of several tables' 0 "$(status_of "$tnl" measure rc.in 'max(vout)')"
expect 'is taken from the finest' 'tnl: vout: taken is wave.dat; --file takes also start.dat, out.dat' "$(cat err.txt)"
expect 'a file of the run' 0 "$(status_of "$tnl" measure rc.in.run/wave.dat 'max(vout) - at(vout, 5m)')"
expect 'has its names' 'max(vout) - at(vout, 5m) = 0 V' "$(cat out.txt)"
expect 'a column that is not there' 2 "$(status_of "$tnl" measure rc.in.run/wave.dat 'max(vou)')"
expect 'is told with those that are' 'tnl: no column vou in rc.in.run/wave.dat; near names: vout; it has time, vout, i' "$(cat err.txt)"
expect 'a bad expression' 2 "$(status_of "$tnl" measure rc.in 'avg(vout, 4m')"
expect 'has a caret' "  avg(vout, 4m
              ^" "$(tail -n 2 err.txt)"
expect 'a comparison does not belong here' 2 "$(status_of "$tnl" measure rc.in 'max(i) < 3')"
expect 'what the rows do not allow' 5 "$(status_of "$tnl" measure rc.in --file wave.dat 'freq(vout)' 'min(vout)')"
expect 'stops nothing else' 'min(vout) = 0 V' "$(cat out.txt)"
expect 'no rows' 5 "$(status_of "$tnl" measure nosuch 'max(c1)')"
expect 'rows on standard input' 'max(c2) = 9' "$(printf '0 1\n1 9\n' | "$tnl" measure - 'max(c2)')"
expect 'curves one by one' 'max(c2) [curve 1] = 1
max(c2) [curve 2] = 7' "$(printf '0 1\n\n1 7\n' | "$tnl" measure - 'max(c2)')"
expect 'one curve' 'max(c2) [curve 2] = 7' "$(printf '0 1\n\n1 7\n' | "$tnl" measure - --curve 2 'max(c2)')"

expect 'claims that hold' 0 "$(status_of "$tnl" assert rc.in --file wave.dat 'max(vout) < 10' '9 < at(vout,5m) < 10' 'overshoot(vout, 10) < 1%')"
expect 'are listed' 'pass  max(vout) < 10' "$(head -n 1 out.txt)"
expect 'a claim that cannot be read' 2 "$(status_of "$tnl" assert rc.in --file wave.dat 'max(i) > 1' 'max(i) < 1 &' --junit x.xml)"
expect 'is told' 'tnl: this does not belong to the expression' "$(head -n 1 err.txt)"
expect 'and leaves no report' no "$([ -e x.xml ] && echo yes || echo no)"
expect 'claims that do not' 4 "$(status_of "$tnl" assert rc.in --file wave.dat 'max(i) > 1' 'min(vout) == 0' 'freq(vout) > 1' --junit x.xml)"
expect 'say what was found' 'FAIL  max(i) > 1  (max(i) = 0.01 A)' "$(head -n 1 out.txt)"
expect 'a claim without a comparison' 2 "$(status_of "$tnl" assert rc.in 'max(i)')"
expect 'a ratio against a plain number' 2 "$(status_of "$tnl" assert rc.in --file wave.dat 'overshoot(vout) < 20')"
expect 'a report that cannot be written' 5 "$(status_of "$tnl" assert rc.in --file wave.dat 'max(i) < 1' --junit /dev/full)"
expect 'standard output that is full' 5 "$("$tnl" assert rc.in --file wave.dat 'max(i) < 1' 2>err.txt >/dev/full; echo $?)"

expect 'no format' 2 "$(status_of "$tnl" export rc.in)"
expect 'two formats' 2 "$(status_of "$tnl" export rc.in --csv --tsv)"
expect 'several tables' 0 "$(status_of "$tnl" export rc.in --csv)"
expect 'the finest is taken' "$(($(wc -l <rc.in.run/wave.dat) + 1))" "$(wc -l <out.txt)"
expect 'csv' 0 "$(status_of "$tnl" export rc.in --file out.dat --csv --units i time)"
expect 'its head' "i [A],time [s]$cr" "$(head -n 1 out.txt)"
expect 'its second line' "0.01,0$cr" "$(sed -n 2p out.txt)"
expect 'its lines are the rows' "$(($(wc -l <rc.in.run/out.dat) + 1))" "$(wc -l <out.txt)"
for format in '--csv' '--tsv' '--npy' '--raw' '--raw --binary' '--vcd'; do
    name=$(echo "rc$format" | tr -d ' -')
    # shellcheck disable=SC2086
    expect "$format" 0 "$(status_of "$tnl" export rc.in --file wave.dat $format -o "$name")"
    "$tnl" export rc.in --file wave.dat $format >again
    expect "$format to standard output is the same" same "$(cmp -s again "$name" && echo same)"
    expect "$format to a full disk" 5 "$(status_of "$tnl" export rc.in --file wave.dat $format -o /dev/full)"
    expect 'is told' 'tnl: cannot write /dev/full: No space left on device' "$(cat err.txt)"
    echo old >kept
    (
        trap '' XFSZ
        ulimit -f 1
        "$tnl" export rc.in --file wave.dat $format -o kept
    ) >/dev/null 2>&1
    expect "$format that does not fit" 5 $?
    expect 'leaves what was there' old "$(cat kept)"
done
mkdir folder
expect 'a folder in place of the file' 5 "$(status_of "$tnl" export rc.in --file wave.dat --csv -o folder)"
expect 'is told' 'tnl: cannot write folder: it is a folder' "$(cat err.txt)"
expect 'a file in a folder that is not there' 5 "$(status_of "$tnl" export rc.in --file wave.dat --csv -o none/x)"
expect 'no part of a file is left behind' '' "$(find . -name '.tnl*part')"
if [ "$(id -u)" -ne 0 ]; then
    chmod a-w folder
    expect 'a folder without permission' 5 "$(status_of "$tnl" export rc.in --file wave.dat --csv -o folder/x)"
    expect 'is told' 'tnl: cannot write folder/x: Permission denied' "$(cat err.txt)"
fi
cp "$source/examples/divider.in" divider.in
"$tnl" run divider.in >/dev/null 2>&1
expect 'no change dump of a sweep' 2 "$(status_of "$tnl" export divider.in --vcd)"
expect 'is told' 'tnl: a VCD file shows rows over time; the first column of divider.in.run/out.dat is r_of_R2' "$(cat err.txt)"

# Logic: two levels and jumps, and one column of many values.
mkdir logic.run
printf '0 0 1.5\n1e-6 0 1.5\n1e-6 5 1.25\n2.5e-6 5 1\n4e-6 0 1\n' >logic.run/w.dat
cat >logic.run/run.json <<'JSON'
{"state": "stopped", "title": "logic", "files": [{"path": "w.dat", "kind": "trns", "columns": [{"name": "time", "unit": "s"},
 {"name": "gate", "unit": "V"}, {"name": "il", "unit": "A"}]}]}
JSON
expect 'change dump' 0 "$(status_of "$tnl" export logic.run --vcd -o logic.vcd)"
expect 'a stopped run is told' 'tnl: the run stopped with a message; these are its rows up to there' "$(cat err.txt)"
printf '0 1\n1 2\n\n0 3\n1 4\n2 5\n' >curves.dat
"$tnl" export curves.dat --raw -o curves.raw
"$tnl" export curves.dat --npy -o curves.npy
"$tnl" export curves.dat --csv -o curves.csv

if there_is python3; then
    expect 'the report, read by an XML reader' '3 1 1 max(i) > 1' "$(python3 -c '
import xml.etree.ElementTree as t
suite = t.parse("x.xml").getroot()[0]
print(suite.get("tests"), len(list(suite.iter("failure"))), len(list(suite.iter("error"))), suite[0].get("name"))')"
    expect 'csv, npy, raw and vcd, read by readers of their formats' good "$(python3 - <<'PY' 2>&1
import ast, csv, struct, sys

rows = [[float(x) for x in line.split()] for line in open("rc.in.run/wave.dat")]
names = ["time", "vout", "i"]
for file, comma in (("rccsv", ","), ("rctsv", "\t")):
    with open(file, newline="") as f:
        table = list(csv.reader(f, delimiter=comma, strict=True))
    assert table[0] == names and [[float(x) for x in r] for r in table[1:]] == rows, file
table = list(csv.reader(open("curves.csv", newline="")))
assert table[0] == ["curve", "c1", "c2"] and [r[0] for r in table[1:]] == ["1", "1", "2", "2", "2"]

def npy(file):
    data = open(file, "rb").read()
    assert data[:8] == b"\x93NUMPY\x01\x00"
    n = struct.unpack("<H", data[8:10])[0]
    assert (10 + n) % 64 == 0 and data[10 + n - 1:10 + n] == b"\n"
    head = ast.literal_eval(data[10:10 + n].decode("latin1"))
    assert head["fortran_order"] is False and all(t == "<f8" for _, t in head["descr"])
    width, (height,) = len(head["descr"]), head["shape"]
    numbers = struct.unpack("<%dd" % (width * height), data[10 + n:])
    return [d[0] for d in head["descr"]], [list(numbers[i * width:(i + 1) * width]) for i in range(height)]
assert npy("rcnpy") == (names, rows)
assert npy("curves.npy") == (["curve", "c1", "c2"], [[1, 0, 1], [1, 1, 2], [2, 0, 3], [2, 1, 4], [2, 2, 5]])
try:
    import numpy
    a = numpy.load("rcnpy")
    assert list(a.dtype.names) == names and a["vout"].tolist() == [r[1] for r in rows]
except ImportError:
    pass

data = open("rcrawbinary", "rb").read()
head, numbers = data.split(b"Binary:\n", 1)
assert list(struct.unpack("<%dd" % (3 * len(rows)), numbers)) == [x for r in rows for x in r]
head, numbers = open("rcraw").read().split("Values:\n", 1)
words = numbers.split()
assert [float(x) for i, x in enumerate(words) if i % 4] == [x for r in rows for x in r]
assert words[::4] == [str(i) for i in range(len(rows))]
print("good")
PY
)"
fi

if there_is ngspice; then
    for file in rcraw rcrawbinary curves.raw; do
        cat >load.sp <<SPICE
* rows of another program
.control
load $file
display
print length(time)
print maximum(vout) minimum(i)
setplot
print length(c1) maximum(c2)
.endc
.end
SPICE
        ngspice -b load.sp >"$file.txt" 2>&1
    done
    n=$(wc -l <rc.in.run/wave.dat)
    for file in rcraw rcrawbinary; do
        expect "$file in a circuit simulator" "$n" "$(awk '/^length\(time\)/ { printf "%d", $3 }' $file.txt)"
        expect 'with its names and values' 1 "$(grep -c '^maximum(vout) = 9.93' $file.txt)"
        grep -E '^ +(time|vout|i) +: (time|voltage|current), real' $file.txt | tr -d ' ' | cut -d, -f1 | sort -u >types.txt
        expect 'with its types' 'i:current time:time vout:voltage' "$(tr '\n' ' ' <types.txt | sed 's/ $//')"
    done
    expect 'the last of several curves is the present plot' 1 "$(grep -c '^length(c1) = 3' curves.raw.txt)"
    expect 'with its values' 1 "$(grep -c '^maximum(c2) = 5' curves.raw.txt)"
else
    echo 'ngspice is not there: rawfiles were read by python alone'
fi

expect 'the change dump as it is meant' '#0 $dumpvars 0! r1.5 " $end #10 1! r1.25 " #25 r1 " #40 0!' \
    "$(sed '1,/enddefinitions/d' logic.vcd | tr '\n' ' ' | sed 's/ $//')"
expect 'its timescale' '$timescale 100 ns $end' "$(grep timescale logic.vcd)"
expect 'its wire and its real' '$var wire 1 ! gate $end
$var real 64 " il $end' "$(grep '^.var' logic.vcd)"
if there_is vcd2fst && there_is fst2vcd; then
    for file in logic.vcd rcvcd; do
        expect "$file is taken by a converter" 0 "$(status_of vcd2fst "$file" "$file.fst")"
        fst2vcd "$file.fst" >"$file.back" 2>/dev/null
        changes() { awk '/^r/ { $1 = sprintf("r%.14g", substr($1, 2)) } /enddefinitions/ { on = 1 } on && /^[#01r]/' "$1" | sort; }
        changes "$file" >a.txt
        changes "$file.back" >b.txt
        expect 'and comes back with the same times and changes' same "$(cmp a.txt b.txt 2>&1 && echo same)"
    done
else
    echo 'vcd2fst is not there: change dumps were not converted'
fi

# Small signals: a low pass with its corner at 1 kHz and two gains, 10 rows a decade that do not hit the corner.
mkdir ac.run
for gain in 1 2; do
    awk -v g=$gain 'BEGIN { if (g > 1) print ""; for (k = 0; k <= 40; k++) { f = 8 * 10 ^ (k / 10)
        printf "%.6e %.6e %.6e\n", f, g / sqrt(1 + (f / 1000) ^ 2), -atan2(f, 1000) * 180 / atan2(0, -1) } }'
done >ac.run/ac.dat
cat >ac.run/run.json <<'JSON'
{"title": "low pass", "state": "complete", "files": [{"path": "ac.dat", "kind": "ac", "rows": 82, "curves": 2,
 "columns": [{"name": "frequency", "unit": "Hz"}, {"name": "mag_of_v", "unit": "V"}, {"name": "phase_of_v", "unit": "deg"}],
 "sweeps": [{"name": "k_of_G1", "unit": "", "values": [1, 2]}]}]}
JSON
expect 'small signals' 0 "$(status_of "$tnl" measure ac.run 'bandwidth(v)' 'phase(v, 1k)')"
expect 'are measured in each curve, which has the values of the sweep' 'bandwidth(v) [curve 1: k_of_G1 = 1]
bandwidth(v) [curve 2: k_of_G1 = 2]
phase(v, 1k) [curve 1: k_of_G1 = 1]
phase(v, 1k) [curve 2: k_of_G1 = 2]' "$(sed 's/ = [^=]*$//' out.txt)"
expect 'near the formula' 'good Hz' "$(awk 'NR == 1 { print ($(NF - 1) - 1000) ^ 2 < 36 ? "good" : "wrong", $NF }' out.txt)"
expect 'a claim' 0 "$(status_of "$tnl" assert ac.run '990 < bandwidth(v) < 1010' '-46 < phase(v, 1k) < -44' --junit ac.xml)"
expect 'is in the report' 2 "$(grep -c '<testcase' ac.xml)"
expect 'one that cannot be measured fails' 4 "$(status_of "$tnl" assert ac.run 'gain_margin(v) > 6')"
expect 'and says why' 1 "$(grep -c 'curve 1 (k_of_G1 = 1): the phase does not pass 180 degrees' out.txt)"
expect 'real and imaginary part' "curve,frequency,real_of_v,imag_of_v$cr" "$("$tnl" export ac.run --csv --cartesian | head -n 1)"
expect 'magnitude and phase' "mag_of_v,phase_of_v$cr" "$("$tnl" export ac.run v --csv --curve 1 | head -n 1)"
expect 'not both' 2 "$(status_of "$tnl" export ac.run --csv --cartesian --polar)"
expect 'nor for a rawfile' 2 "$(status_of "$tnl" export ac.run --raw --polar)"
expect 'a complex rawfile' 0 "$(status_of "$tnl" export ac.run --raw --curve 2 -o ac.raw)"
expect 'as bytes' 0 "$(status_of "$tnl" export ac.run v --raw --binary --curve 2 -o ac.bin)"
if there_is ngspice; then
    for file in ac.raw ac.bin; do # row 21 stands at 800 Hz: 2 / (1 + 0.8 i)
        printf '* read\n.control\nload %s\nlet f = real(frequency[20])\nlet re = real(v[20])\nlet im = imag(v[20])\nprint f re im length(v)\n.endc\n.end\n' $file >read.cir
        ngspice -b read.cir >seen.txt 2>&1
        expect "ngspice reads $file" 'good good good good' "$(awk '
            function is(x, y) { return (x - y) ^ 2 < 1e-10 * y ^ 2 ? "good" : "wrong " x }
            $2 == "=" { v[$1] = $3 }
            END { print is(v["f"], 800), is(v["re"], 2 / 1.64), is(v["im"], -1.6 / 1.64), is(v["length(v)"], 41) }' seen.txt)"
    done
fi

# The same of a run: the corner of R and C is 1 / (2 pi R C), here 1591.55 Hz and a tenth of that.
cat >low_pass.in <<'DECK'
title: low pass
begin_circuit
refnode 0
eelement name=V1 type=vsrcdc p=a n=0 vdc=1 a_ac=1
eelement name=R1 type=r p=a n=b r=1k
eelement name=C1 type=c p=b n=0 c=1u
outvar: vb=nodev_ac_of_b i=i_ac_of_V1
end_circuit
begin_solve
solve_type ac
vary_freq from 1 to 100k type log n_points 251
vary_parm r_of_R1 type table 100 1k
begin_output
filename a.dat
variables: mag_of_vb phase_of_vb mag_of_i phase_of_i
end_output
begin_output
filename n.dat nyquist=yes output_hz=no
variables: phase_of_vb mag_of_vb
end_output
end_solve
end_cf
DECK
expect 'a run over frequencies' 0 "$(status_of "$tnl" run low_pass.in)"
expect 'has the curves of its sweep' 'low_pass.in.run/a.dat: 502 rows in 2 curves of frequency mag_of_vb phase_of_vb mag_of_i phase_of_i' "$(grep a.dat out.txt err.txt | sed 's/^[^:]*: *//' | head -n 1)"
expect 'that are measured' 0 "$(status_of "$tnl" assert low_pass.in '1591 < bandwidth(vb) < 1592' --curve 1)"
expect 'one by one' 0 "$(status_of "$tnl" assert low_pass.in '159.1 < bandwidth(vb) < 159.2' '99.9 < mag(vb / -i, 1) / 1.592k < 100.1' --curve 2)"
expect 'as real and imaginary part, over rad/s' 0 "$(status_of "$tnl" assert low_pass.in --file n.dat '9.99k < bandwidth(vb) < 10.01k' '-46 < phase(vb, 10k) < -44' --curve 1)"

no_faults
