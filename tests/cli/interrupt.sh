#!/bin/sh
# Runs that end early, by a signal or by a step that fails, leave complete rows; and no locale of the user's changes one.
# Arguments: the simulator, the folder of the installed libraries, a folder to work in.
arguments='tarnel share work'
. "$(dirname -- "$0")/expect.sh"
working_folder "$share" 1000
deck() { # settings, settings of the rows; the diode stays off and sends the run through Newton
    cat >.tnlaux/cct.in <<END
title: charging
begin_circuit
refnode 0
eelement name=V1 type=vsrcdc p=in n=0 vdc=1
eelement name=R1 type=r p=in n=a r=1k
eelement name=C1 type=c p=a n=0 c=1u
eelement name=D1 type=diode_r p=0 n=a
outvar: va=nodev_of_a ic=i_of_C1
end_circuit
begin_solve
solve_type trns
method: gmin_step=no $1
begin_output
filename rows.dat limit_lines=2000000000
${2:-}
variables: va ic
end_output
end_solve
end_cf
END
}
# Lines that are not three numbers of 13 columns, each with a blank behind it.
broken_lines() {
    grep -a -c -v -E '^([ -][0-9]\.[0-9]{6}e[-+][0-9]{2} ){3}$' rows.dat
}
rows_size() { [ -f rows.dat ] && wc -c <rows.dat || echo 0; }
ends_with_newline() { [ -z "$(tail -c 1 rows.dat)" ] && echo yes || echo no; }

# The same circuit at a hundred million frequencies.
small_signal_deck() {
    deck 'back_euler=yes'
    sed -i -e 's/^eelement name=V1 type=vsrcdc/eelement name=V1 type=vsrcac a_ac=1/' \
        -e 's/^outvar:.*/outvar: va=nodev_ac_of_a/' -e 's/^solve_type trns/solve_type ac/' \
        -e 's/^method:.*/vary_freq from 1 to 1G type log n_points 100000000/' \
        -e 's/^variables:.*/variables: mag_of_va phase_of_va/' .tnlaux/cct.in
}

# A run without an end that anybody would wait for: signal, its number, name, text on the console.
ended_by() {
    rm -f rows.dat
    "$tarnel" >text 2>errors </dev/null &
    run=$!
    tries=0
    while [ "$(rows_size)" -lt 200000 ] && [ $tries -lt 600 ]; do
        sleep 0.05
        tries=$((tries + 1))
    done
    kill -s "$1" $run
    wait $run
    expect "$3 $1: status" $((128 + $2)) $?
    expect "$3 $1: text" "$4" "$(cat text)"
    expect "$3 $1: nothing on standard error" '' "$(cat errors)"
    expect "$3 $1: lines that are no rows" 0 "$(broken_lines)"
    expect "$3 $1: the last line is complete" yes "$(ends_with_newline)"
    [ "$(wc -l <rows.dat)" -ge 4000 ] || expect "$3 $1: rows" 'at least 4000' "$(wc -l <rows.dat)"
}
# A thousand million steps, unless a signal comes.
deck 'back_euler=yes t_end=1000 delt_const=1u itmax_trns=2000000000 n_wrtiterno=2000000000'
in_time='mat::set_mat_2: system matrix size is 3 x 3
Transient simulation starts...
iter_trns=0 time=0'
ended_by INT 2 transient "$in_time"
ended_by TERM 15 transient "$in_time"
small_signal_deck
ended_by INT 2 'small signals' 'solve_class: gmin stepping can only be used
  for DC and trns. Resetting l_gmin_step to F.
set_mat_2_ac: system matrix size is 3 x 3'

# A kill that nobody can catch loses less than the last second: few rows, far from filling any buffer, are on the disk.
rm -f rows.dat
deck 'back_euler=yes t_end=1000 delt_const=1u itmax_trns=2000000000 n_wrtiterno=2000000000' 'control: fixed_interval=50m'
"$tarnel" >text 2>errors </dev/null &
run=$!
tries=0
while [ "$(rows_size)" -lt 80 ] && [ $tries -lt 600 ]; do
    sleep 0.05
    tries=$((tries + 1))
done
kill -s KILL $run
wait $run 2>/dev/null
expect 'kill: lines that are no rows' 0 "$(broken_lines)"
rows=$(wc -l <rows.dat)
[ "$rows" -ge 2 ] && [ "$rows" -le 400 ] || expect 'kill: rows' '2 to 400' "$rows"

# Asked to end where it does not listen, here in opening a pipe that nobody reads, it ends all the same.
rm -f rows.dat
mkfifo rows.dat
"$tarnel" >text 2>errors </dev/null &
run=$!
sleep 0.5
kill -s TERM $run
tries=0
while kill -0 $run 2>/dev/null && [ $tries -lt 200 ]; do
    sleep 0.1
    tries=$((tries + 1))
done
kill -0 $run 2>/dev/null && { expect 'a run that does not listen' ended running; kill -s KILL $run; }
wait $run 2>/dev/null
expect 'a run that does not listen: status' 143 $?
rm rows.dat

# A step that fails: what came before it is on the disk.
rm -f rows.dat
deck 'back_euler=yes t_end=1m delt_const=0.1m itmax_newton=1'
"$tarnel" >text 2>errors </dev/null
expect 'failing step: status' 1 $?
expect 'failing step: text' 'mat::set_mat_2: system matrix size is 3 x 3
Transient simulation starts...
iter_trns=0 time=0
solve_trns: N-R iterations did not converge.
  iter_trns_anlg=1
  time (4)=0.0002
  Halting...' "$(cat text)"
expect 'failing step: rows' ' 0.000000e+00  0.000000e+00  0.000000e+00 
 1.000000e-04  9.090083e-02  9.090083e-04 ' "$(cat rows.dat)"

# The same bytes where numbers are written with a comma.
deck 'trapezoidal=yes t_end=5m delt_const=5u'
LC_ALL=C "$tarnel" >text </dev/null
expect 'plain locale: status' 0 $?
cp rows.dat plain.dat
if command -v localedef >/dev/null && localedef -i de_DE -f UTF-8 ./de_DE.UTF-8 >/dev/null 2>&1; then
    LOCPATH=$work
    export LOCPATH
fi
LC_ALL=de_DE.UTF-8 "$tarnel" >text_elsewhere </dev/null
expect 'locale with a comma: status' 0 $?
expect 'locale with a comma: text' "$(cat text)" "$(cat text_elsewhere)"
cmp rows.dat plain.dat || faults=$((faults + 1))
[ "$(wc -l <rows.dat)" -ge 1000 ] || expect 'rows in time' 'at least 1000' "$(wc -l <rows.dat)"

no_faults
