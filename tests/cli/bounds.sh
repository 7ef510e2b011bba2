#!/bin/sh
# Texts without an end, and more of them than a deck may have: a message and a status of the table, soon, and within a
# gigabyte. Arguments: tnl, tarnel, a folder to work in, the folder of the source tree.
arguments='tnl tarnel work source'
. "$(dirname -- "$0")/expect.sh"
if takes_memory_limit "$tnl"; then ulimit -v 1000000; fi
bounded() { # command...; 124 when it does not end
    timeout 60 "$@" >out.txt 2>err.txt </dev/null
    echo $?
}
said() { cat out.txt err.txt; }
mkfifo pipe

# ---- the deck itself --------------------------------------------------------------------------------------------------------

for command in run check; do
    expect "$command: an endless device" 5 "$(bounded "$tnl" $command /dev/zero)"
    expect "$command: an endless device: text" 'tnl: cannot read /dev/zero: it is a device' "$(said)"
    expect "$command: a pipe that nobody writes" 5 "$(bounded "$tnl" $command pipe)"
    expect "$command: a pipe: text" 'tnl: cannot read pipe: it is a pipe' "$(said)"
    yes '# a comment that goes on and on' 2>/dev/null | timeout 60 "$tnl" $command - >out.txt 2>err.txt
    expect "$command: endless standard input" 5 $?
    expect "$command: endless standard input: text" \
        'tnl: cannot read standard input: it has more than 64 MB, the most that is read' "$(said)"
done
for command in plot 'measure --file' export; do
    file=
    [ "$command" = 'measure --file' ] && file='measure pipe avg(x)'
    [ "$command" = plot ] && file='plot pipe'
    [ "$command" = export ] && file='export pipe --csv'
    expect "$file" 5 "$(bounded "$tnl" $file)"
done

# ---- files that it includes -------------------------------------------------------------------------------------------------

included() { # what stands behind include
    printf 'title: t\ninclude %s\n' "$1" >deck.in
    for command in check run; do
        expect "$command: include $1" 3 "$(bounded "$tnl" $command deck.in)"
        expect "$command: include $1: text" 1 "$(said | grep -c "deck.in:2:.*$2")"
    done
}
included /dev/zero 'cannot read /dev/zero: it is a device'
included /dev/urandom 'cannot read /dev/urandom: it is a device'
included pipe 'cannot read pipe: it is a pipe'
yes '# a line of a file that is too large' | head -c 70000000 >large.in
included large.in 'cannot read large.in: it has more than 64 MB, the most that is read'
yes '' | head -n 2100000 >long.in
included long.in 'a deck has at most 2000000 lines with all that it includes'
rm large.in long.in

# Each file includes the next one twice: 2^45 lines.
level=0
while [ $level -lt 45 ]; do
    printf 'include %s.in\ninclude %s.in\n' $((level + 1)) $((level + 1)) >$level.in
    level=$((level + 1))
done
echo '# the last' >45.in
for command in check run; do
    expect "$command: files that double" 3 "$(bounded "$tnl" $command 0.in)"
    expect "$command: files that double: text" 1 \
        "$(said | grep -c '^tnl: [0-9]*.in:[12]: a deck includes at most 10000 files\|^[0-9]*.in:[12]:1: error: a deck in')"
done
# The same with files of a megabyte: they fill the memory before they are many.
yes '# a comment that is long enough to reach the bytes before the lines' | head -c 1000000 >45.in
expect 'large files that double' 3 "$(bounded "$tnl" run 0.in)"
expect 'large files that double: text' 1 "$(said | grep -c ': a deck has at most 64 MB with all that it includes')"

# ---- data files -----------------------------------------------------------------------------------------------------------

cp "$source/examples/divider.in" deck.in
for name in /dev/zero /dev/urandom pipe; do
    sed "s|^solve_type dc|&\ninitial_sol file filename $name|" deck.in >data.in
    expect "a start from $name" 3 "$(bounded "$tnl" run data.in)"
    expect "a start from $name: place" 1 "$(said | grep -c '^data.in:11:27:$')"
    sed "s|^outvar|gelement name=T1 type=table_1d x=u y=w file=$name\n&|" deck.in >data.in
    expect "data from $name" 3 "$(bounded "$tnl" run data.in)"
    expect "data from $name: check" 3 "$(bounded "$tnl" check data.in)"
done

# ---- the simulator alone ----------------------------------------------------------------------------------------------------

bounded "$tnl" run deck.in >/dev/null
cd deck.in.run || exit 1
rm .tnlaux/cct.in
ln -s /dev/zero .tnlaux/cct.in
expect 'an endless deck' 1 "$(bounded "$tarnel")"
expect 'an endless deck: text' 'text_file: file .tnlaux/cct.in is a device or a pipe. Halting...' "$(said)"
rm .tnlaux/cct.in
mkfifo .tnlaux/cct.in
expect 'a deck that nobody writes' 1 "$(bounded "$tarnel")"
rm .tnlaux/cct.in
# Less memory than the file needs.
if ! takes_memory_limit "$tarnel"; then
    no_faults
    exit
fi
yes '# a comment' | head -c 300000000 >.tnlaux/cct.in
(
    ulimit -v 200000
    bounded "$tarnel" >../status
)
expect 'no memory for the deck' 1 "$(cat ../status)"
expect 'no memory for the deck: text' 'main: there is not enough memory for this.
  Halting...' "$(said)"
cd .. || exit 1
# Nor for the past of a block.
past() { # parameters of a block with the input u and the output y
    cat >past.in <<end
title: t
begin_circuit
xelement name=S type=srcac y=u a=1 f_hz=50
xelement name=D x=u y=y $1
end_circuit
end_cf
end
    (
        ulimit -v 1000000
        bounded "$tnl" run past.in
    )
}
expect 'no memory for a delay' 1 "$(past 'type=delay_2 n_delay=2147483647')"
expect 'no memory for a delay: text' 'delay_line: there is not enough memory for 2147483647 values.' \
    "$(said | grep 'memory for')"
expect 'no memory for a mean' 1 "$(past 'type=rms_mv n_smp=2147483647')"
expect 'no memory for a mean: text' 'sliding_mean: there is not enough memory for 2147483647 values.' \
    "$(said | grep 'memory for')"
rm -rf past.in past.in.run
yes '# a comment' | head -c 60000000 >deck.in
(
    ulimit -v 100000
    bounded "$tnl" check deck.in >status
)
expect 'no memory in the front end' 5 "$(cat status)"
expect 'no memory in the front end: text' 'tnl: there is not enough memory for this' "$(said)"
rm -rf deck.in deck.in.run

no_faults
