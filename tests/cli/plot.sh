#!/bin/sh
# tnl plot from outside: pictures, statuses, and where its text goes. Arguments: the program, a folder to work in, the
# folder of the source tree.
arguments='tnl work source'
. "$(dirname -- "$0")/expect.sh"
is_xml() { # file
    python3 -c 'import sys, xml.etree.ElementTree as t; print(t.parse(sys.argv[1]).getroot().tag)' "$1" 2>&1
}
words_of() { # file: the words in the picture, one a line
    python3 -c 'import sys, xml.etree.ElementTree as t
for e in t.parse(sys.argv[1]).iter("{http://www.w3.org/2000/svg}text"): print(e.text)' "$1"
}
has() { [ "$(grep -cxF -- "$1")" -gt 0 ] && echo yes || echo no; }
svg='{http://www.w3.org/2000/svg}svg'

mkdir a.run b.run
awk 'BEGIN { for (i = 0; i <= 3000; i++) printf "%.6e %.6e %.6e %.6e\n", i * 1e-6, sin(i / 100), cos(i / 100) * 2e-3, 5 }' >a.run/wave.dat
printf '0 5 5e-3 5\n' >a.run/start.dat
awk 'BEGIN { for (h = 0; h < 6; h++) printf "%.6e 0\n%.6e %.6e\n%.6e 0\n", h - 1e-4, h, 10 / (h + 1), h + 1e-4 }' >a.run/f.dat
cat >a.run/run.json <<'JSON'
{"title": "waves & <tags>", "state": "complete", "files": [
 {"path": "start.dat", "kind": "startup", "rows": 1, "columns": [{"name": "vout", "unit": "V"}, {"name": "il", "unit": "A"}]},
 {"path": "wave.dat", "kind": "trns", "rows": 3001, "columns": [{"name": "time", "unit": "s"}, {"name": "vout", "unit": "V"},
  {"name": "il", "unit": "A"}, {"name": "vref", "unit": "V"}]},
 {"path": "f.dat", "kind": "fourier", "rows": 18, "columns": [{"name": "harmonic", "unit": ""}, {"name": "vh", "unit": "V"}]}]}
JSON
awk 'BEGIN { for (i = 0; i <= 200; i++) printf "%.6e %.6e\n", i * 1e-5, cos(i / 10) }' >b.run/wave.dat
cat >b.run/run.json <<'JSON'
{"title": "other", "state": "complete", "files": [{"path": "wave.dat", "kind": "trns", "rows": 201,
 "columns": [{"name": "time", "unit": "s"}, {"name": "vout", "unit": "V"}]}]}
JSON

expect 'a picture' 0 "$(status_of "$tnl" plot a.run -o all.svg)"
expect 'is well-formed' "$svg" "$(is_xml all.svg)"
words_of all.svg >words.txt
for word in 'waves & <tags>' 'time, ms' vout vref V 'il, mA'; do expect "it says $word" yes "$(has "$word" <words.txt)"; done
expect 'the other files are named' 'tnl: a.run: shown is wave.dat; --file takes also start.dat, f.dat' "$(cat err.txt)"
expect 'nothing on standard output' '' "$(cat out.txt)"
expect 'the same again' 0 "$(status_of "$tnl" plot a.run -o again.svg)"
expect 'is the same bytes' same "$(cmp -s all.svg again.svg && echo same)"
expect 'standard output' 0 "$(status_of "$tnl" plot a.run -o -)"
expect 'gets the same bytes' same "$(cmp -s all.svg out.txt && echo same)"

expect 'columns by name and number' 0 "$(status_of "$tnl" plot a.run il 2 -o two.svg --title 'my own')"
words_of two.svg >words.txt
for word in 'my own' 'vout, V' 'il, mA'; do expect "it says $word" yes "$(has "$word" <words.txt)"; done
expect 'and not vref' no "$(has vref <words.txt)"
expect 'the file that has the column is found' 0 "$(status_of "$tnl" plot a.run vh -o f.svg)"
expect 'over harmonics' yes "$(words_of f.svg | has harmonic)"
expect 'two runs' 0 "$(status_of "$tnl" plot a.run b.run vout -o over.svg)"
words_of over.svg >words.txt
for word in 'vout (a.run)' 'vout (b.run)' 'vout, V'; do expect "they are named: $word" yes "$(has "$word" <words.txt)"; done
expect 'a file without record' 0 "$(cp b.run/wave.dat lone.dat && status_of "$tnl" plot lone.dat -o lone.svg)"
expect 'has numbered columns' yes "$(words_of lone.svg | has c2)"
expect 'a stack' 0 "$(status_of "$tnl" plot a.run --stack -o stack.svg)"
expect 'has three axes' 'il, mA vout, V vref, V' "$(words_of stack.svg | grep ', m*[VA]$' | sort | tr '\n' ' ' | sed 's/ $//')"
expect 'a window' 0 "$(status_of "$tnl" plot a.run vout --from 1m --to 1.5m -o window.svg)"
expect 'shows its times' yes "$(words_of window.svg | has 1.20)"
expect 'and no other' no "$(words_of window.svg | has 2.00)"

expect 'an expression' 0 "$(status_of "$tnl" plot a.run 'vref - vout' 'p = vout*il' -o expression.svg)"
words_of expression.svg >words.txt
for word in 'vref - vout, V' 'p, mW'; do expect "it says $word" yes "$(has "$word" <words.txt)"; done
expect 'a panel of volts and amperes' 0 "$(status_of "$tnl" plot a.run --panel vout,il --panel 'max(vout, 0, 1m),vref' -o panel.svg)"
expect 'has their names' 'vout il max(vout, 0, 1m) vref' "$(words_of panel.svg | grep -x 'vout\|il\|vref\|max.*' | tr '\n' ' ' | sed 's/ $//')"
expect 'ends of an axis' 0 "$(status_of "$tnl" plot a.run vout il --y vout=0:2 -o ends.svg)"
expect 'are shown' yes "$(words_of ends.svg | has 2.0)"
expect 'the time axis stays' yes "$(words_of ends.svg | has 3.0)"
for word in 5 2:1 : x=1 a:b; do expect "--y $word is wrong usage" 2 "$(status_of "$tnl" plot a.run --y $word)"; done
expect 'so is one of a column that is not drawn' 2 "$(status_of "$tnl" plot a.run vout --y il=0:1)"
expect 'an expression without end' 2 "$(status_of "$tnl" plot a.run 'vout +')"
expect 'an expression with an unknown column' 2 "$(status_of "$tnl" plot a.run 'vout - nosuch')"
expect 'names it' 'tnl: nosuch is neither a column nor a run; columns are' "$(head -n 1 err.txt)"
expect 'standard input' 2 "$(status_of "$tnl" plot - vout)"
expect 'is told' yes "$(grep -q 'standard input to tnl run, measure and assert' err.txt && echo yes)"

mkdir c.run d.run
cp b.run/wave.dat c.run
sed 's/"complete"/"stopped", "message": "solve_dc: no way.\\n  Halting..."/' b.run/run.json >c.run/run.json
expect 'a run that stopped' 0 "$(status_of "$tnl" plot c.run -o c.svg)"
expect 'is told' 'tnl: c.run: the run stopped with a message: solve_dc: no way.; these are its rows up to there' "$(cat err.txt)"
printf '%s\n' '{"state": "stopped", "message": "solve_dc: no way.\n  Halting...", "files": []}' >d.run/run.json
expect 'one that stopped before its first row' 5 "$(status_of "$tnl" plot d.run vout)"
expect 'is told' 'tnl: d.run has no row files; the run stopped with a message: solve_dc: no way.' "$(cat err.txt)"
expect 'measure tells it too' 5 "$(status_of "$tnl" measure d.run 'avg(vout)')"
expect 'in these words' 'tnl: d.run has no tables; the run stopped with a message: solve_dc: no way.' "$(cat err.txt)"
mkdir e.run e.run/.partial
cp b.run/wave.dat b.run/run.json e.run
cp d.run/run.json e.run/.partial
expect 'rows before a later run that stopped' 0 "$(status_of "$tnl" plot e.run -o e.svg)"
expect 'are told to be so' yes "$(grep -q 'these rows are of the last run that came to its end; a later one stopped' err.txt && echo yes)"

expect 'in the terminal' 0 "$(status_of env LC_ALL=C "$tnl" plot a.run vout)"
expect 'in plain characters' 0 "$(LC_ALL=C grep -c '[^ -~]' out.txt)"
expect 'with the axis' yes "$(grep -q 'time, ms' out.txt && echo yes)"
expect 'in braille' 0 "$(status_of env LC_ALL=C.UTF-8 "$tnl" plot a.run vout)"
expect 'without colours' 0 "$(grep -c "$(printf '\033')" out.txt)"
expect 'dots are there' yes "$(grep -q '⣀\|⠉\|⠒\|⠤' out.txt && echo yes)"
expect 'or not' 0 "$(status_of env LC_ALL=C.UTF-8 "$tnl" plot a.run vout --ascii)"
expect 'when plain is asked for' 0 "$(LC_ALL=C grep -c '[^ -~]' out.txt)"

expect 'an unknown column is wrong usage' 2 "$(status_of "$tnl" plot a.run nosuch)"
expect 'with those that exist' '  wave.dat: time, vout, il, vref' "$(grep wave err.txt)"
expect 'an empty window is wrong usage' 2 "$(status_of "$tnl" plot a.run --from 5m --to 2m)"
expect 'an unknown kind of picture is wrong usage' 2 "$(status_of "$tnl" plot a.run -o x.gif)"
expect 'with those that exist' 'tnl: -o x.gif: the name of a picture ends in .svg, .png or .pdf; - writes SVG to standard output' "$(cat err.txt)"
for size in 10x10 0x0 720 720x440x3 99999x99999 -5x7; do
    expect "the size $size is wrong usage" 2 "$(status_of "$tnl" plot a.run -o s.svg --size=$size)"
done
expect 'a number that is none is wrong usage' 2 "$(status_of "$tnl" plot a.run --from soon)"
expect 'an unknown file of the run is wrong usage' 2 "$(status_of "$tnl" plot a.run --file w.dat)"
expect 'harmonics over time are wrong usage' 2 "$(status_of "$tnl" plot a.run/wave.dat a.run/f.dat)"
expect 'a missing run' 5 "$(status_of "$tnl" plot nosuch.run)"
expect 'an empty file' 5 "$(: >empty.dat && status_of "$tnl" plot empty.dat)"
expect 'is told' 'tnl: empty.dat has no rows' "$(cat err.txt)"
expect 'words among the rows' 5 "$(echo '1 two' >words.dat && status_of "$tnl" plot words.dat)"
expect 'a folder that is not there' 5 "$(status_of "$tnl" plot a.run -o nosuch/x.svg)"
expect 'values that are none' 0 "$(printf '0 nan\n1 inf\n2 nan\n' >nan.dat && status_of "$tnl" plot nan.dat -o nan.svg)"
expect 'make a picture' "$svg" "$(is_xml nan.svg)"
expect 'one row' 0 "$(printf '1 5\n' >one.dat && status_of "$tnl" plot one.dat -o one.svg)"
expect 'makes a picture' "$svg" "$(is_xml one.svg)"

echo kept >kept.png
mkdir none
expect 'without the converter' 5 "$(PATH=$work/none status_of "$tnl" plot a.run -o kept.png)"
expect 'its package is named' 'tnl: a PNG picture needs rsvg-convert (Debian package librsvg2-bin)' "$(tail -n 1 err.txt)"
expect 'and the old picture is kept' kept "$(cat kept.png)"
if command -v rsvg-convert >/dev/null 2>&1; then
    for kind in png pdf; do
        expect "a $kind" 0 "$(status_of "$tnl" plot a.run -o 1.$kind)"
        expect "a $kind again, a second later" 0 "$(sleep 1.1 && status_of "$tnl" plot a.run -o 2.$kind)"
        expect 'is the same bytes' same "$(cmp -s 1.$kind 2.$kind && echo same)"
    done
    expect 'a PNG begins as one' PNG "$(head -c 4 1.png | tail -c 3)"
    expect 'a PDF begins as one' %PDF "$(head -c 4 1.pdf)"
fi

awk 'BEGIN { for (i = 0; i < 200000; i++) printf "%.6e %.6e %.6e\n", i, (i * 7919) % 1000, i == 123456 ? 5000 : i % 10 }' >long.dat
expect 'many rows' 0 "$(status_of "$tnl" plot long.dat -o long.svg)"
expect 'make a small picture' yes "$([ "$(wc -c <long.svg)" -lt 200000 ] && echo yes)"
expect 'with the spike' yes "$(words_of long.svg | has 5000)"

# One row is a point: it is told, and drawn so that it is seen.
printf ' 1e-3 5 \n' >one.dat
expect 'a file of one row' 0 "$(LC_ALL=C.UTF-8 status_of "$tnl" plot one.dat)"
expect 'is told' 'tnl: one row is no curve, but a point: c2=5 at c1=0.001' "$(cat err.txt)"
expect 'and drawn' 1 "$(grep -c '⣿' out.txt)"
expect 'a picture of it' 0 "$(status_of "$tnl" plot one.dat -o one.svg)"
expect 'has the point' 1 "$(grep -c 'stroke-width="5" stroke-linecap="round"' one.svg)"

# Small signals: a Bode plot unless told otherwise.
mkdir ac.run
awk 'BEGIN { for (k = 0; k <= 40; k++) { f = 10 ^ (k / 10); printf "%.6e %.6e %.6e\n", f, 1 / sqrt(1 + (f / 100) ^ 2), -atan2(f, 100) * 57.29577951 } }' >ac.run/ac.dat
cat >ac.run/run.json <<'JSON'
{"title": "low pass", "state": "complete", "files": [{"path": "ac.dat", "kind": "ac", "rows": 41, "curves": 1,
 "columns": [{"name": "frequency", "unit": "Hz"}, {"name": "mag_of_v", "unit": "V"}, {"name": "phase_of_v", "unit": "deg"}]}]}
JSON
expect 'small signals' 0 "$(status_of "$tnl" plot ac.run v -o bode.svg)"
words_of bode.svg >words.txt
for word in 'mag_of_v, dB' 'phase_of_v, deg' 'frequency, Hz' 10k -90; do expect "it says $word" yes "$(has "$word" <words.txt)"; done
expect 'as they are' 0 "$(status_of "$tnl" plot ac.run v --linear-x --linear-y -o linear.svg)"
words_of linear.svg >words.txt
for word in 'mag_of_v, V' 'frequency, kHz'; do expect "it says $word" yes "$(has "$word" <words.txt)"; done
expect 'in the complex plane' 0 "$(status_of "$tnl" plot ac.run v --nyquist -o nyquist.svg)"
words_of nyquist.svg >words.txt
for word in -1 'real part of v, V' 'imaginary part of v, V'; do expect "it says $word" yes "$(has "$word" <words.txt)"; done
expect 'not of one column' 2 "$(status_of "$tnl" plot ac.run mag_of_v --nyquist)"
expect 'nor both ways' 2 "$(status_of "$tnl" plot ac.run --log-y --linear-y)"

no_faults
