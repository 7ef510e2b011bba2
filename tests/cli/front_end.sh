#!/bin/sh
# The program tnl from outside: statuses, files, and where its text goes. Arguments: the program, a folder to work in, the
# folder of the source tree.
arguments='tnl work source'
. "$(dirname -- "$0")/expect.sh"
mkdir -p decks

expect 'version' 0 "$(status_of "$tnl" --version)"
expect 'help' 0 "$(status_of "$tnl" --help)"
expect 'no command is wrong usage' 2 "$(status_of "$tnl")"
expect 'an unknown command is wrong usage' 2 "$(status_of "$tnl" fly)"
expect 'a run needs a deck' 2 "$(status_of "$tnl" run)"

expect 'a missing deck' 5 "$(status_of "$tnl" run nosuch.in)"
expect 'is told on standard error' 'tnl: cannot read nosuch.in: No such file or directory' "$(cat err.txt)"
expect 'a folder in place of a deck' 5 "$(status_of "$tnl" run decks)"
expect 'is told' 'tnl: cannot read decks: it is a folder' "$(cat err.txt)"
expect 'and leaves nothing behind' no "$([ -e decks.run ] && echo yes || echo no)"

cp "$source/examples/divider.in" decks/divider.in
expect 'a deck in another folder runs' 0 "$(status_of "$tnl" run decks/divider.in)"
expect 'the last line of its text' 'TARNEL: Program completed.' "$(tail -n 1 out.txt)"
expect 'its rows are named' 'decks/divider.in.run/out.dat: 3 rows of r_of_R2 vout' "$(tail -n 1 err.txt)"
printf ' 1.000000e+03  5.000000e+00 \n 2.000000e+03  6.666667e+00 \n 5.000000e+03  8.333333e+00 \n' >wanted.dat
expect 'its rows' "$(cat wanted.dat)" "$(cat decks/divider.in.run/out.dat)"
sed "s/delt_const=10u/delt_const=2u/" "$source/tests/decks/power_factor_of_r_l/deck.in" >decks/power.in
expect 'a deck with results of its rows runs' 0 "$(status_of "$tnl" run decks/power.in)"
expect 'and they are told with their units' 'decks/power.in.run/power.dat: p=6 W, r1=7.07107 V, r2=1.41421 A, pf=0.6' \
    "$(grep power.dat err.txt)"
expect 'their file is drawn as points' 0 "$(status_of "$tnl" plot decks/power.in --file power.dat)"
expect 'and measured' 'pf = 0.6' "$("$tnl" measure decks/power.in 'pf')"
expect 'the same again' 0 "$(status_of "$tnl" run decks/divider.in)"
expect 'and into a folder of choice' 0 "$(status_of "$tnl" run decks/divider.in -o there)"
expect 'with the same rows' "$(cat wanted.dat)" "$(cat there/out.dat)"
mkdir mine && echo text >mine/file
expect 'but not into one that holds other things' 5 "$(status_of "$tnl" run decks/divider.in -o mine)"

sed 's/type=vsrcdc/type=vsrdc/' decks/divider.in >wrong.in
expect 'a stop of the simulator is status 1' 1 "$(status_of "$tnl" run wrong.in)"
expect 'its place is told' '  wrong.in:4:23: error: no element type vsrdc is installed for eelement; near names: vsrcdc' "$(tail -n 4 out.txt | head -n 1)"
sed 's/r=1k/r=1kk/' decks/divider.in >wrong.in
expect 'a bad number is status 1' 1 "$(status_of "$tnl" run wrong.in)"
expect 'its place is told' '  wrong.in:5:38: error: this is no number: 1kk' "$(tail -n 4 out.txt | head -n 1)"
sed '/^refnode/d' decks/divider.in >wrong.in
expect 'a missing reference node is status 1' 1 "$(status_of "$tnl" run wrong.in)"
: >empty.in
expect 'an empty deck is status 1' 1 "$(status_of "$tnl" run empty.in)"
head -c 4000 "$tnl" >binary.in
expect 'bytes are status 1' 1 "$(status_of "$tnl" run binary.in)"

# What a run does not stop at is told behind it; what it did stop at before its first row costs no results.
sed 's/^begin_solve/begin_solv/' decks/divider.in >silent.in
expect 'a block that nobody reads is a fault of the deck' 3 "$(status_of "$tnl" run silent.in)"
expect 'is told with its place' 1 "$(grep -c 'silent.in:9:1: error:' err.txt)"
expect 'behind what the status means' 1 "$(grep -c '^tnl: the run came to its end without rows that the deck asks for, status 3' err.txt)"
sed 's/^solve_type dc/solve_type cd/' decks/divider.in >nothing.in
expect 'so is one that solves nothing' 3 "$(status_of "$tnl" run nothing.in)"
expect 'is told with its place' 1 "$(grep -c 'nothing.in:10:12: error: there is no solve_type cd' err.txt)"
expect 'and stands in the record' 1 "$(grep -c '"status": 3' nothing.in.run/run.json)"
# A deck of more lines than the simulator takes unasked: 3000 sections of a ladder, which ends as an endless one begins.
{
    printf 'title: ladder\nbegin_circuit\nrefnode 0\neelement name=V1 type=vsrcdc p=n0 n=0 vdc=10\n'
    awk 'BEGIN { for (k = 0; k < 3000; ++k) {
        print "eelement name=R" k " type=r p=n" k " n=n" k + 1 " r=1k"
        print "eelement name=S" k " type=r p=n" k + 1 " n=0 r=1k" } }'
    printf 'outvar: v=nodev_of_n1\nend_circuit\nbegin_solve\nsolve_type dc\nbegin_output\nfilename v.dat\nvariables: v\n'
    printf 'end_output\nend_solve\nend_cf\n'
} >long.in
expect 'a long deck' 0 "$(status_of "$tnl" run long.in)"
expect 'its row' ' 3.819660e+00 ' "$(cat long.in.run/v.dat)" # 10 (3 - sqrt 5)/2
expect 'its limit' "M_DECK_LINES $(wc -l <long.in)" "$(tail -n 1 long.in.run/tmpdim.in)"
expect 'is checked' 0 "$(status_of "$tnl" check long.in)"
expect 'a short deck has none' 0 "$(grep -c M_DECK_LINES decks/divider.in.run/tmpdim.in)"
cat >doubt.in <<'END'
title: a diode at 400 V that is to carry 1 mA
begin_circuit
refnode 0
eelement name=V1 type=vsrcdc p=k n=0 vdc=400
gelement name=G1 type=const y=s k=1m
eelement name=I1 type=isrc_1 p=0 n=a x=s
eelement name=D1 type=diode_spice_1 p=a n=k
outvar: i=i_of_D1
end_circuit
begin_solve
solve_type dc
begin_output
filename out.dat
variables: i
end_output
end_solve
end_cf
END
expect 'a point that is no solution' 0 "$(status_of "$tnl" run -q doubt.in)"
expect 'is told with its place' 1 "$(grep -c 'doubt.in:[46]:[0-9]*: warning: the solution leaves a residual of [^ ]* A at node' err.txt)"
expect 'and kept' 1 "$(grep -c '"message": "the solution leaves a residual of .* at node [ak]"' doubt.in.run/run.json)"
sed -i 's/solve_type dc/&\nmethod: chk_rhs2=yes norm_2=1e-9/' doubt.in
expect 'with the advice' 0 "$(status_of "$tnl" run -q doubt.in)"
expect 'there is none' 0 "$(grep -c warning err.txt)"
cp decks/divider.in twice.in
expect 'a good run' 0 "$(status_of "$tnl" run twice.in)"
expect 'has no findings' 0 "$(grep -c 'did not stop at these' err.txt)"
sed -i 's/type=vsrcdc/type=vsrdc/' twice.in
expect 'and a mistake made behind it' 1 "$(status_of "$tnl" run twice.in)"
expect 'keep its rows' "$(cat wanted.dat)" "$(cat twice.in.run/out.dat)"
expect 'as is told' 'tnl: twice.in.run/ holds the results of the earlier run as they were' "$(tail -n 1 err.txt)"
sed 's/method: .*/& itmax_trns=5/' "$source/examples/rc_step/deck.in" >cut.in
expect 'a run cut off by itmax_trns reached a limit' 6 "$(status_of "$tnl" run -q cut.in)"
expect 'as is told' 1 "$(grep -c '^tnl: the steps that itmax_trns allows were used up at t = ' err.txt)"

expect 'the demo runs' 0 "$(status_of "$tnl" demo)"
for file in bridge.in bridge.svg bridge.in.run/bridge.dat network.in network.svg network.in.run/network.dat; do
    expect "it writes $file" yes "$([ -s "tnl-demo.run/$file" ] && echo yes || echo no)"
done
expect 'rows of the bridge' 101 "$(wc -l <tnl-demo.run/bridge.in.run/bridge.dat)"
expect 'curves and rows of the network' 152 "$(wc -l <tnl-demo.run/network.in.run/network.dat)"

no_faults
