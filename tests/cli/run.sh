#!/bin/sh
# tnl run from outside: what stands where when a run is killed, interrupted, out of time or out of disk. Arguments: tnl,
# tarnel, a folder to work in, the folder of the source tree.
arguments='tnl tarnel work source'
umount "$3/small" 2>/dev/null && echo "a file system of an earlier test was still there"
. "$(dirname -- "$0")/expect.sh"
is_there() { [ -e "$1" ] && echo yes || echo no; }
gone() { # process: ended, whether or not somebody has taken its status
    [ ! -r "/proc/$1/stat" ] || [ "$(sed 's/.*) //; s/ .*//' "/proc/$1/stat" 2>/dev/null)" = Z ]
}
wait_for() { # command...; until it succeeds, a minute at most
    tries=0
    until "$@" || [ $tries -ge 1200 ]; do
        sleep 0.05
        tries=$((tries + 1))
    done
}
state_of() { sed -n 's/^  "state": "\(.*\)",$/\1/p' "$1"; }
simulator_of() { # front end; beside it a second process of the front end checks the deck
    for child in $(cat "/proc/$1/task/$1/children" 2>/dev/null); do
        [ "$(cat "/proc/$child/comm" 2>/dev/null)" = tarnel ] && echo "$child"
    done
}

# The buck converter of the examples, for a short time and for one that no test waits for.
buck() { # t_end
    sed "s/t_end=30m/t_end=$1/; s/itmax_trns=1000000/itmax_trns=2000000000/; s/n_wrtiterno=50000/n_wrtiterno=1000/
        s/filename wave.dat/filename wave.dat limit_lines=1000000000/
        s/filename out.dat/filename out.dat limit_lines=1000000000/; s/0.25m/10u/" \
        "$source/examples/buck_control/deck.in" >buck.in
}
start_buck() { # in the background, until there are rows
    rm -rf buck.in.run/.partial
    "$tnl" run buck.in >out.txt 2>err.txt </dev/null &
    front=$!
    wait_for has_rows
}
has_rows() { [ "$(wc -c 2>/dev/null <buck.in.run/.partial/out.dat || echo 0)" -gt 0 ]; }

# ---- a run and its record -----------------------------------------------------------------------------------------------

buck 1m
expect 'a run' 0 "$(status_of "$tnl" run buck.in)"
expect 'its text is the simulators' 'TARNEL: Program completed.' "$(tail -n 1 out.txt)"
expect 'its rows are counted' "buck.in.run/out.dat: $(wc -l <buck.in.run/out.dat) rows of time vout duty" \
    "$(tail -n 1 err.txt)"
expect 'a row at rest' "buck.in.run/start.dat: 1 row of vout il" "$(grep start.dat err.txt)"
mkdir by_hand && cp -r buck.in.run/.tnlaux buck.in.run/tmpdim.in by_hand
(cd by_hand && "$tarnel" >../tarnel.txt)
cmp out.txt tarnel.txt || expect 'in a pipe, the text is the simulators, byte for byte' same different
cmp buck.in.run/out.dat by_hand/out.dat || expect 'and so are the rows' same different
expect 'quiet' 0 "$(status_of "$tnl" run -q buck.in)"
expect 'has no text' '' "$(cat out.txt)"
expect 'nor anything but the rows' '' "$(grep -v rows err.txt | grep -v '1 row')"

expect 'a record for scripts' 0 "$(status_of "$tnl" run --json buck.in -o elsewhere/folder)"
cmp out.txt elsewhere/folder/run.json || expect 'is the one that stands there' same different
if command -v python3 >/dev/null; then
    expect 'what it says' "complete 0 trns time s vout V duty  $(wc -l <elsewhere/folder/out.dat)" "$(python3 -c '
import json, sys
r = json.load(open("out.txt"))
f = [f for f in r["files"] if f["path"] == "out.dat"][0]
print(r["state"], r["status"], f["kind"], *[w for c in f["columns"] for w in (c["name"], c["unit"])], f["rows"])')"
else
    echo 'no python3: the record is not read'
fi

expect 'a deck from standard input' 0 "$("$tnl" run - <buck.in >out.txt 2>err.txt; echo $?)"
cmp buck.in.run/out.dat stdin.run/out.dat || expect 'gives the same rows' same different

# ---- kills: the earlier results stand, the rows of the killed run are readable ---------------------------------------------

cp buck.in.run/out.dat before.dat
check_after_kill() { # who was killed and when
    cmp buck.in.run/out.dat before.dat || expect "$1: earlier rows" same different
    expect "$1: earlier record" complete "$(state_of buck.in.run/run.json)"
    if [ -e buck.in.run/.partial/out.dat ]; then
        broken=$(sed '$d' buck.in.run/.partial/out.dat | awk 'NF != 3 { n++ } END { print n + 0 }')
        expect "$1: lines that are no rows" 0 "$broken"
    fi
}
buck 1000
moment=0
for whom in tnl tarnel both tnl tarnel both tnl tarnel both tnl; do
    "$tnl" run buck.in >out.txt 2>err.txt </dev/null &
    front=$!
    sleep 0.$((moment * 13 / 10))$((moment * 13 % 10))
    simulator=$(simulator_of $front)
    case $whom in
        tnl) kill -s KILL $front ;;
        tarnel) [ -z "$simulator" ] && kill -s KILL $front || kill -s KILL "$simulator" ;;
        both) kill -s KILL $front $simulator 2>/dev/null ;;
    esac
    wait $front 2>/dev/null
    ended=$?
    expect "$whom killed at moment $moment: status" 137 $ended
    if [ -n "$simulator" ]; then
        wait_for gone "$simulator"
        gone "$simulator" || expect "$whom killed at moment $moment: the simulator" ended running
    fi
    check_after_kill "$whom killed at moment $moment"
    moment=$((moment + 1))
done

start_buck
rows=$(wc -l <buck.in.run/.partial/out.dat)
kill -s KILL "$(simulator_of $front)" || kill -s KILL $front
wait $front
expect 'a killed simulator: status' 137 $?
check_after_kill 'a killed simulator'
[ "$(wc -l <buck.in.run/.partial/out.dat)" -ge "$rows" ] || expect 'rows that were there' kept lost
expect 'its record' signal "$(state_of buck.in.run/.partial/run.json)"
expect 'is told' 1 "$(grep -c 'the simulator was killed; rows up to t = .* are in buck.in.run/.partial/$' err.txt)"

# The last moments of short runs, where files get their places: each is whole, of one run or of the other.
cp "$source/examples/divider.in" short.in
"$tnl" run -q short.in 2>/dev/null
cp short.in.run/out.dat first.dat
sed 's/vdc=10/vdc=20/' "$source/examples/divider.in" >other.in
"$tnl" run -q other.in 2>/dev/null
cp other.in.run/out.dat second.dat
for moment in 01 02 03 04 05 06 07 08 09 10 12 14 16 18 20 25 30 40; do
    if [ $((1$moment % 2)) -eq 0 ]; then cp other.in short.in; else cp "$source/examples/divider.in" short.in; fi
    "$tnl" run -q short.in >out.txt 2>err.txt </dev/null &
    front=$!
    sleep 0.0$moment
    kill -s KILL $front 2>/dev/null
    wait $front 2>/dev/null
    found=
    for place in short.in.run short.in.run/.partial; do
        [ -e $place/out.dat ] || continue
        cmp -s $place/out.dat first.dat || cmp -s $place/out.dat second.dat && found=yes
        if [ $place = short.in.run ] && [ -z "$found" ]; then expect "a short run killed at $moment: rows" whole cut; fi
    done
    expect "a short run killed at $moment: rows of one run or the other" yes "$found"
    cat short.in.run/run.json >record 2>/dev/null || cat short.in.run/.partial/run.json >record
    expect "a short run killed at $moment: record" '}' "$(tail -n 1 record)"
done
cp other.in short.in
expect 'a run after kills' 0 "$(status_of "$tnl" run short.in)"
cmp short.in.run/out.dat second.dat || expect 'rows of a run after kills' same different
expect 'leaves nothing aside' no "$(is_there short.in.run/.partial)"

# ---- ends that are asked for ------------------------------------------------------------------------------------------------

for signal in INT TERM HUP; do
    rm -rf buck.in.run
    start_buck
    kill -s $signal $front
    wait $front
    status=$?
    case $signal in
        INT) expect 'interrupted' 130 $status ;;
        TERM) expect 'asked to end' 143 $status ;;
        HUP) expect 'hung up' 129 $status ;;
    esac
    expect "$signal: the record" signal "$(state_of buck.in.run/run.json)"
    expect "$signal: nothing aside" no "$(is_there buck.in.run/.partial)"
    expect "$signal: rows" 0 "$(awk 'NF != 3 { n++ } END { print n + 0 }' buck.in.run/out.dat)"
    expect "$signal: is told" 1 "$(grep -c '; rows up to t = .* are in buck.in.run/$' err.txt)"
done
expect 'a limit of time' 6 "$(status_of "$tnl" run --time-limit 1.5 buck.in)"
expect 'is told' 1 "$(grep -c '^tnl: time limit of 1.5 s reached at t = .*; rows up to t = .* are in buck.in.run/$' err.txt)"
expect 'its record' limit "$(state_of buck.in.run/run.json)"
claim='max(vout) < 1000'
expect 'a claim about rows that were cut' 6 "$(status_of "$tnl" assert buck.in --file out.dat "$claim" --junit report.xml)"
expect 'fails for that' 'FAIL  the run came to its end  (the run did not come to its end (limit))' "$(head -n 1 out.txt)"
expect 'in the report too' 1 "$(grep -c '<testcase .*the run came to its end' report.xml)"
expect 'but when they are meant' 0 "$(status_of "$tnl" assert --cut buck.in --file out.dat "$claim")"

# Results of a run that came to its end are not lost to one that was cut.
buck 1m
expect 'a run to its end' 0 "$(status_of "$tnl" run -q buck.in)"
cp buck.in.run/out.dat before.dat
expect 'a claim about it' 0 "$(status_of "$tnl" assert buck.in --file out.dat "$claim")"
buck 1000
for how in limit TERM; do
    if [ $how = limit ]; then
        status_of "$tnl" run --time-limit 1.5 buck.in >/dev/null
    else
        start_buck
        kill -s TERM $front
        wait $front
    fi
    cmp buck.in.run/out.dat before.dat || expect "$how: the rows of the run to its end" same different
    expect "$how: their record" complete "$(state_of buck.in.run/run.json)"
    expect "$how: the rows of the run that was cut" yes "$([ -s buck.in.run/.partial/out.dat ] && echo yes || echo no)"
    expect "$how: are named" 1 "$(grep -c '; rows up to t = .* are in buck.in.run/.partial/$' err.txt)"
    expect "$how: as are the others" 1 "$(grep -c 'buck.in.run/ holds the results of the earlier run' err.txt)"
    expect "$how: a claim" 6 "$(status_of "$tnl" assert buck.in --file out.dat "$claim")"
    expect "$how: a claim about the rows of the run to its end" 0 \
        "$(status_of "$tnl" assert --cut buck.in --file out.dat "$claim")"
done
cp buck.in.run/.partial/out.dat cut.dat
buck 1m
sed -i 's/itmax_trns=[0-9]*/itmax_trns=5/' buck.in
expect 'steps used up' 6 "$(status_of "$tnl" run -q buck.in)"
cmp buck.in.run/out.dat before.dat || expect 'steps used up: the rows of the run to its end' same different
buck 1m
expect 'the next run to its end' 0 "$(status_of "$tnl" run -q buck.in)"
expect 'clears away what was cut' no "$(is_there buck.in.run/.partial)"

# The limit counts from the start: also for a deck that is slow to read.
expect 'a limit while the deck is read' 6 \
    "$(sleep 3 | timeout 60 "$tnl" run --time-limit 0.3 - -o slow >out.txt 2>err.txt; echo $?)"
expect 'is told' 'tnl: the time limit was reached before the simulator started' "$(cat err.txt)"
expect 'and leaves nothing' no "$(is_there slow)"

# Memory that cannot be had: a message and a status of the table.
yes '# a line of a deck' | head -n 500000 >large.in
if takes_memory_limit "$tnl"; then commands='run check'; else commands=; fi
for command in $commands; do
    expect "memory: $command" 5 "$( (ulimit -v 40000; status_of "$tnl" $command large.in) )"
    expect "memory: $command is told" 'tnl: there is not enough memory for this' "$(cat err.txt)"
done
rm large.in
buck 1000
expect 'a limit is a positive number' 2 "$(status_of "$tnl" run --time-limit -1 buck.in)"
expect 'and a number' 2 "$(status_of "$tnl" run --time-limit soon buck.in)"
rm -rf buck.in.run
start_buck
expect 'a second run of the deck meanwhile' 5 "$("$tnl" run buck.in >out2.txt 2>err2.txt; echo $?)"
expect 'is told' 'tnl: cannot use buck.in.run: another run goes on in it' "$(cat err2.txt)"
kill -s TERM $front
wait $front

# ---- a terminal -----------------------------------------------------------------------------------------------------------

buck 30m
if script -qec true /dev/null </dev/null >/dev/null 2>&1; then # there may be no terminals to be had
    TERM=xterm script -qec "'$tnl' run buck.in" /dev/null </dev/null >screen.txt 2>&1
    expect 'on a terminal no lines of progress' 0 "$(grep -c iter_trns screen.txt)"
    expect 'but the other text' 1 "$(grep -c 'TARNEL: Program completed.' screen.txt)"
else
    echo 'no script: the terminal is not tried'
fi

# ---- stops --------------------------------------------------------------------------------------------------------------------

mkdir -p parts
sed '/^eelement name=R1/d' "$source/examples/divider.in" | sed 's/^refnode 0/refnode 0\ninclude parts\/load.in  # R1/' >main.in
printf '# the load\neelement name=R1 type=r p=in n=out r=1kk  # a slip\n' >parts/load.in
expect 'a mistake in an included file' 1 "$(status_of "$tnl" run main.in)"
expect 'is told with its place' 1 "$(grep -c 'parts/load.in:2:' out.txt)"
sed -i 's/1kk/1k/' parts/load.in
expect 'mended' 0 "$(status_of "$tnl" run main.in)"
cmp main.in.run/out.dat first.dat || expect 'rows of a deck in two files' same different
buck '1m itmax_newton=1'
expect 'a step that fails' 1 "$(status_of "$tnl" run buck.in)"

# ---- places that cannot be written ------------------------------------------------------------------------------------------

cp "$source/examples/divider.in" deck.in
mkdir full_of && echo text >full_of/thesis
echo text >a_file
for place in full_of a_file a_file/below /dev/null /dev/full /proc/nothing; do
    expect "into $place" 5 "$(status_of "$tnl" run deck.in -o $place)"
    expect "into $place: is told" 1 "$(grep -c "^tnl: cannot .* $place" err.txt)"
done
expect 'what stood there' 'text text' "$(cat full_of/thesis) $(cat a_file)"
expect 'and nothing more' thesis "$(ls -A full_of)"

small=$work/small
mkdir "$small"
if mount -t tmpfs -o size=400k none "$small" 2>/dev/null; then
    trap 'umount "$small"' EXIT
    buck 0.1m
    cp buck.in "$small"
    expect 'on a small disk a small run' 0 "$(status_of "$tnl" run -q small/buck.in)"
    cp small/buck.in.run/wave.dat before.dat
    buck 30m
    cp buck.in "$small"
    expect 'a run that fills it' 5 "$(status_of "$tnl" run -q small/buck.in)"
    expect 'the file is named' 1 "$(grep -c 'could not be written' out.txt)"
    expect 'and the cause' 1 "$(grep -c '^tnl: .*.dat could not be written: No space left on device; rows up to' err.txt)"
    expect 'the rows are named' 1 "$(grep -c 'rows up to t = .* are in small/buck.in.run/.partial/$' err.txt)"
    cmp small/buck.in.run/wave.dat before.dat || expect 'the earlier rows' same different
    expect 'the earlier record' complete "$(state_of small/buck.in.run/run.json)"
    rm -rf small/buck.in.run/.partial
    cat /dev/zero >small/filler 2>/dev/null
    expect 'a disk that is full already' 5 "$(status_of "$tnl" run small/buck.in)"
    expect 'the file is named' 1 "$(grep -c '^tnl: cannot .* small/buck.in.run/.partial.*: No space left on device$' err.txt)"
    cmp small/buck.in.run/wave.dat before.dat || expect 'the earlier rows' same different
    rm small/filler
    mount -o remount,ro "$small"
    expect 'a folder that cannot be written' 5 "$(status_of "$tnl" run small/buck.in)"
    expect 'is named' 1 "$(grep -c '^tnl: cannot make small/buck.in.run/.partial: Read-only file system$' err.txt)"
    expect 'a new one in it' 5 "$(status_of "$tnl" run deck.in -o small/new)"
    expect 'is named' 'tnl: cannot make small/new: Read-only file system' "$(cat err.txt)"
    cmp small/buck.in.run/wave.dat before.dat || expect 'the earlier rows' same different
else
    echo 'no file system could be mounted: a full disk and a read-only one are not tried'
fi

no_faults
