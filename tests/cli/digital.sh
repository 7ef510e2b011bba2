#!/bin/sh
# A circuit with logic in it from outside: run, check, plot, measure, assert, export. Arguments: the program, a folder to
# work in, the folder of the source tree.
arguments='tnl work source'
. "$(dirname -- "$0")/expect.sh"
there_is() { command -v "$1" >/dev/null 2>&1; }

# The deck of the page for users, as it stands there: a clock of 2 us, two bits, a switch that is on while they are 3.
sed -n '/^    title: a clock/,/^    end_cf/p' "$source/docs/digital.md" | sed 's/^    //' >logic.in
expect 'the deck has no faults' 'logic.in: no faults' "$("$tnl" check logic.in 2>&1)"
expect 'it runs' 0 "$(status_of "$tnl" run logic.in)"
expect 'and writes both files' 'logic.in.run/logic.dat' "$(cat out.txt err.txt | grep -o 'logic.in.run/logic.dat')"
expect 'the record tells the digital file, its offset and its levels' 'logic.dat 2.0 clk q0 q1 gate' "$(python3 -c '
import json
for f in json.load(open("logic.in.run/run.json"))["files"]:
    if f["digital"]: print(f["path"], f["offset"], *[c["name"] for c in f["columns"] if c.get("level")])')"

# 20 us: ten periods of the clock; the bits count its rises from 0 on and are 3 in the fourth and the eighth period.
expect 'edges are measured' 0 "$(status_of "$tnl" measure logic.in 'frequency(clk)' 'duty(clk)' 'count(gate, rise)' 'delay(clk, q0, rise)')"
expect 'as they are' 'frequency(clk) = 500000 Hz
duty(clk) = 0.5
count(gate, rise) = 2
delay(clk, q0, rise) = 1e-09 s' "$(sed 's/49999[0-9.]* Hz/500000 Hz/; s/= 1\.0000[0-9]*e-09/= 1e-09/' out.txt)"
# Each expression finds its own file; a word that is wrong keeps none of the others back.
expect 'of both files at once' 0 "$(status_of "$tnl" measure logic.in 'max(vout)' 'count(gate, rise)')"
expect 'each from its own' '2 2' "$(grep -c '=' out.txt) $(sed -n 's/count(gate, rise) = //p' out.txt)"
expect 'and one that is wrong' 2 "$(status_of "$tnl" measure logic.in 'count(gat)' 'count(gate, rise)' 'count(' 'max(vout, q0)' 'max(vout)')"
expect 'with the others' 'count(gate, rise) max(vout)' "$(sed 's/ =.*//' out.txt | tr '\n' ' ' | sed 's/ $//')"
expect 'and what is wrong with each' 3 "$(grep -c '^tnl: ' err.txt)"
expect 'in JSON too' '3 of 5' "$("$tnl" measure logic.in --json 'count(gat)' 'count(gate, rise)' 'count(' 'max(vout, q0)' 'max(vout)' 2>/dev/null | python3 -c '
import json, sys
all = json.load(sys.stdin)
print(sum("error" in m and m["value"] is None for m in all), "of", len(all))')"
expect 'claims of which one is none' 2 "$(status_of "$tnl" assert logic.in 'count(gat) == 2' 'count(gate, rise) == 2' 'max(vout) < 1')"
expect 'are all told' 'FAIL pass FAIL' "$(cut -c1-4 out.txt | tr '\n' ' ' | sed 's/ $//')"
expect 'claims about levels' 0 "$(status_of "$tnl" assert logic.in 'max(q0 + 2*q1, 3u, 20u) == 3' 'count(clk, rise) >= 9' '0.24 < avg(gate, 4u, 20u) < 0.26' 'max(vout) > 9.9')"
expect 'one that does not hold' 4 "$(status_of "$tnl" assert logic.in 'count(gate) == 2')"

expect 'a picture of both' 0 "$(status_of "$tnl" plot logic.in -o logic.svg)"
words() { python3 -c 'import sys, xml.etree.ElementTree as t
print(*[e.text for e in t.parse(sys.argv[1]).getroot().iter("{http://www.w3.org/2000/svg}text")])' "$1"; }
has() { case " $(words "$1") " in *" $2 "*) echo yes ;; *) echo no ;; esac; }
for word in 'vout, V' 'q[1:0]' gate 'time, us'; do expect "it says $word" yes "$(has logic.svg "$word")"; done
expect 'bits alone' 0 "$(status_of "$tnl" plot logic.in --bits --file logic.dat -o bits.svg)"
expect 'have lanes of their own' 'yes no' "$(has bits.svg q1) $(has bits.svg 'vout, V')"
expect 'in the terminal' 0 "$(status_of "$tnl" plot logic.in clk q0 q1 --ascii)"
expect 'with the number' 1 "$(grep -c '^ *q\[1:0\] +' out.txt)"

expect 'plain levels' 0 "$(status_of "$tnl" export logic.in --file logic.dat --csv -o logic.csv)"
expect 'are 0 and 1' '0 1' "$(tr -d '\r' <logic.csv | tail -n +2 | cut -d, -f2- | tr ',' '\n' | sort -u | tr '\n' ' ' | sed 's/ $//')"
expect 'a change dump' 0 "$(status_of "$tnl" export logic.in --file logic.dat --vcd -o logic.vcd)"
expect 'of wires' 4 "$(grep -c '^.var wire 1 ' logic.vcd)"
expect 'of the file of levels, if none is named' 0 "$(status_of "$tnl" export logic.in --vcd -o first.vcd)"
expect 'the same' same "$(cmp logic.vcd first.vcd 2>&1 && echo same)"
expect 'a vector' 0 "$(status_of "$tnl" export logic.in --file logic.dat --vcd --buses -o bus.vcd)"
expect 'of the bits' 1 "$(grep -c '^.var wire 2 . q \[1:0\] .end' bus.vcd)"
expect 'is for change dumps' 2 "$(status_of "$tnl" export logic.in --csv --buses)"
if there_is vcd2fst && there_is fst2vcd; then
    for file in logic.vcd bus.vcd; do
        expect "$file is taken by a converter" 0 "$(status_of vcd2fst "$file" "$file.fst")"
        fst2vcd "$file.fst" >"$file.back" 2>/dev/null
        changes() { awk '/enddefinitions/ { on = 1 } on && /^[#01xb]/' "$1" | sort; }
        changes "$file" >a.txt
        changes "$file.back" >b.txt
        expect 'and comes back with the same times and changes' same "$(cmp a.txt b.txt 2>&1 && echo same)"
    done
else
    echo 'vcd2fst is not there: change dumps were not converted'
fi

# Without an offset the rows are integers, and all commands say the same.
sed 's/delt_const=0.2u/delt_const=0.2u offset_dgtl=0/' logic.in >plain.in
"$tnl" run plain.in >/dev/null 2>&1
"$tnl" export plain.in --file logic.dat --csv -o plain.csv
expect 'the same levels without an offset' same "$(cmp logic.csv plain.csv 2>&1 && echo same)"

# A composite of the deck that joins both sides.
cat >leg.in <<'DECK'
title: a leg of its own
gme name=leg
mainnodes_anlg: p n x
mainnodes_dgtl: up
auxnodes_dgtl: low
outvar_dgtl: low=dvar_of_low
calldce not name=g a=up y=low
callece switch_d name=s1 p=p n=x s=up
callece switch_d name=s2 p=x n=n s=low
endgme
begin_circuit
refnode 0
eelement name=V1 type=vsrcdc p=dc n=0 vdc=10
delement name=K1 type=clock y=clk t1=2u t2=3u
gmelement name=L type=leg p=dc n=0 x=x up=clk
eelement name=R1 type=r p=x n=0 r=10
outvar: clk=dvar_of_clk low=low_of_L
end_circuit
begin_solve
solve_type trns
method: t_end=20u delt_const=0.2u back_euler=yes
begin_output
filename d.dat
variables: clk low
end_output
end_solve
end_cf
DECK
expect 'a mixed composite of the deck has no faults' 'leg.in: no faults' "$("$tnl" check leg.in 2>&1)"
expect 'runs' 0 "$(status_of "$tnl" run leg.in)"
expect 'and shows its own node' 0 "$(status_of "$tnl" assert leg.in 'count(low, 1u, 20u) == count(clk)' '0.39 < avg(clk, 5u, 20u) < 0.41' 'avg(low + clk, 5u, 20u) > 0.99')"
sed 's/s=low$/s=lou/' leg.in >wrong.in
expect 'a fault in it' 3 "$(status_of "$tnl" check wrong.in)"
expect 'has its place' 'wrong.in:9:36: error: lou is no word of mainnodes_dgtl: or auxnodes_dgtl:; near names: low' "$(head -1 out.txt)"

# The other deck of the page: the clock rises at 50 ns, a gate of 1 ns gives a pulse until an inverter of 5 ns ends it.
sed -n '/^    title: a pulse/,/^    end_cf/p' "$source/docs/digital.md" | sed 's/^    //' >pulse.in
expect 'the pulses of the page' 0 "$(status_of "$tnl" run pulse.in)"
expect 'are three of 5 ns' 0 "$(status_of "$tnl" assert pulse.in 'count(edge, rise) == 3' '0.0499 < duty(edge) < 0.0501' '50.99n < cross(edge, 0.5, 1, rise) < 51.01n' 'max(edge) <= 1')"

no_faults
