#!/bin/sh
# `tnl check` and `tnl explain` from outside: statuses, and what goes where. Arguments: the program, a folder to work in,
# the folder of the source tree.
arguments='tnl work source'
. "$(dirname -- "$0")/expect.sh"

cp "$source/examples/divider.in" good.in
sed 's/p=out n=0/p=ot n=0/' good.in >warned.in
sed 's/r=1k/r=1kk/' good.in >wrong.in
printf 'title: t\ninclude nosuch.in\n' >include.in

expect 'a good deck' 0 "$(status_of "$tnl" check good.in)"
expect 'is told so' 'good.in: no faults' "$(cat out.txt)"
expect 'warnings alone are no errors' 0 "$(status_of "$tnl" check warned.in)"
expect 'but are told' yes "$(grep -q 'warning: ' out.txt && echo yes || echo no)"
expect 'and count when asked' 3 "$(status_of "$tnl" check --strict warned.in)"
expect 'an error is status 3' 3 "$(status_of "$tnl" check wrong.in)"
expect 'the report is on standard output' 'wrong.in: 1 error, 0 warnings' "$(tail -n 1 out.txt)"
expect 'and nowhere else' '' "$(cat err.txt)"
expect 'the list for programs' 3 "$(status_of "$tnl" check wrong.in --json)"
expect 'is one of JSON' yes "$(python3 -c 'import json; f = json.load(open("out.txt")); print("yes" if len(f) == 1 and f[0]["place"]["line"] == 5 else "no")')"
expect 'no faults are an empty list' 0 "$(status_of "$tnl" check good.in --json)"
expect 'namely this' '[]' "$(cat out.txt)"
expect 'an include that is not there' 3 "$(status_of "$tnl" check include.in)"
expect 'has its place' 'include.in:2:1: error: cannot read nosuch.in: No such file or directory' "$(head -n 1 out.txt)"
expect 'a deck that is not there' 5 "$(status_of "$tnl" check nosuch.in)"
expect 'no deck is wrong usage' 2 "$(status_of "$tnl" check)"
"$tnl" check - <wrong.in >out.txt 2>err.txt
expect 'standard input' 3 $?
head -c 4000 "$tnl" >binary.in
expect 'bytes' 3 "$(status_of "$tnl" check binary.in)"

expect 'a message' 0 "$(status_of "$tnl" explain 'Singular matrix? Halting...')"
expect 'is explained' 'meaning: The equations have no unique solution: the matrix is singular.' "$(head -n 1 out.txt)"
expect 'words need no quotes' 0 "$(status_of "$tnl" explain some word has not been ticked)"
expect 'an unknown message is status 1' 1 "$(status_of "$tnl" explain zebra crossing ahead)"
expect 'and told on standard error' '' "$(cat out.txt)"
expect 'nothing to explain is wrong usage' 2 "$(status_of "$tnl" explain)"
expect 'all messages' 0 "$(status_of "$tnl" explain --list)"
status_of "$tnl" run wrong.in >/dev/null
expect 'the folder of a run that stopped' 0 "$(status_of "$tnl" explain wrong.in.run)"
expect 'is read' 'meaning: A word stands where a number should, or a number has more than one letter of scale.' "$(head -n 1 out.txt)"
status_of "$tnl" run good.in >/dev/null
expect 'a run without a message' 5 "$(status_of "$tnl" explain good.in.run)"
expect 'the code of a finding' 0 "$(status_of "$tnl" explain two-zeros)"
expect 'is explained too' 'meaning: Two nodes have a name for zero, and one of them is not at 0 V (a warning).' "$(head -n 1 out.txt)"
echo 'cct_class: cct_ov_flag = IGL_CLEAR' | "$tnl" explain - >out.txt
expect 'a message on standard input' 0 $?

# ---- what check says, and a run ------------------------------------------------------------------------------------------

# both NAME, STATUS of check, STATUS of run, PHRASE that check tells, or nothing: of deck.in.
both() {
    expect "$1: check" "$2" "$(status_of "$tnl" check deck.in)"
    [ -z "$4" ] || expect "$1: is told" 1 "$(grep -cF -- "$4" out.txt)"
    expect "$1: run" "$3" "$(status_of "$tnl" run -q deck.in)"
    [ "$2" = 3 ] || expect "$1: nothing behind the run" 0 "$(grep -c ': error: ' err.txt)"
    [ -z "$4" ] || expect "$1: run tells" 1 "$(cat out.txt err.txt | grep -cF -- "$4")"
}
title='title: t'
circuit='begin_circuit
refnode 0
eelement name=V1 type=vsrcdc p=in n=0 vdc=10
eelement name=R1 type=r p=in n=out r=1k
eelement name=D1 type=diode p=out n=0
outvar: v=nodev_of_out
end_circuit'
block() { # file, type and further statements
    printf 'begin_solve\nsolve_type %s\nbegin_output\nfilename %s\nvariables: v\nend_output\nend_solve\n' "$2" "$1"
}
deck() { # text of the blocks
    printf '%s\n%s\n%s\nend_cf\n' "$title" "$circuit" "$1" >deck.in
}
blocks=$(for i in $(seq 22); do block "$i.dat" dc; done)
deck "$blocks"
both 'two blocks too many' 3 3 'deck.in:149:1: error: this and later solve blocks are not read: a deck has at most 20'
expect 'the rows of the others' 20 "$(ls deck.in.run/*.dat | wc -l)"

# Devices and pipes: named in passing, and where a file is to be read.
title='title: beside /dev/null'
deck "$(block out.dat dc)"
both 'a device in the title' 0 0 ''
title='title: t'
deck "$(block out.dat 'dc
initial_sol file filename /dev/zero')"
both 'a start from a device' 3 3 'cannot read /dev/zero: it is a device'
mkfifo pipe
deck "$(block out.dat dc | sed 's/^filename .*/filename pipe append=yes/')"
both 'rows behind those of a pipe' 3 3 'cannot read pipe: it is a pipe'
title='title: t
gstring f=/dev/zero'
deck "$(block out.dat dc)"
both 'a device with a name' 3 3 'cannot read /dev/zero: it is a device'
title='title: t'

# Statements outside of all blocks: rows are missing only where they ask for some.
title='title: t
gmodel name=mm type=pi kp=4'
deck "$(block out.dat dc)"
both 'a model before the circuit' 3 0 'deck.in:2:1: error: the statement gmodel ... stands outside of all blocks and is not read'
expect 'has its one fault' 'deck.in: 1 error, 0 warnings' "$("$tnl" check deck.in | tail -n 1)"
title='title: t'
deck "end_circuit
$(block out.dat dc)"
both 'a second end of the circuit' 3 0 'deck.in:9:1: error: end_circuit without a begin_circuit before it'
deck "$(block out.dat dc)
end_solve"
both 'a second end of a block' 3 0 'deck.in:16:1: error: end_solve without a begin_solve before it'
deck "filename more.dat
$(block out.dat dc)"
both 'an output without its block' 3 3 'deck.in:9:1: error: the statement filename ... stands outside of all blocks'
deck "$(block out.dat dc)
$(block more.dat dc | sed s/begin_solve/begin_slove/)"
both 'a misspelt begin of a block' 3 3 'deck.in:16:1: error: the statement begin_slove ... stands outside of all blocks'

# Rows that go where they may, though not where a run without -o and --force would have them.
mkdir elsewhere
ln -s ../elsewhere deck.in.run/aside
deck "$(block aside/out.dat dc)"
expect 'a link in the folder' 3 "$(status_of "$tnl" check deck.in)"
expect 'is told' 1 "$(grep -c 'deck.in:12:10: error: an output file outside the folder of the run$' out.txt)"
expect 'in another folder there is none' 0 "$(status_of "$tnl" run -q deck.in -o other)"
expect 'and nothing to tell' 'other/aside/out.dat: 1 row of v' "$(cat err.txt)"
deck "$(block "$PWD/elsewhere/out.dat" dc)"
expect 'a whole path' 3 "$(status_of "$tnl" check deck.in)"
expect 'is told' 1 "$(grep -c 'deck.in:12:10: error: an output file outside the folder of the run, which only' out.txt)"
expect 'with force' 0 "$(status_of "$tnl" run -q --force deck.in)"
expect 'there is nothing to tell' 0 "$(grep -c ': error: ' err.txt)"

# Settings with which a run stops, and others near them with which it does not.
in_time() { # words of method:, file options
    deck "$(block "out.dat${2-}" "trns
method: t_end=40u delt_const=1u $1")"
}
in_time 'back_euler=yes gmin_step=yes gmin_start=0'
both 'gmin stepping from zero' 3 1 'deck.in:11:62: error: gmin_start must be above zero: the run would stop'
in_time 'back_euler=yes gmin_step=yes gmin_end=-1p'
both 'gmin stepping beyond zero' 3 1 'deck.in:11:62: error: gmin_end must be above zero: the run would stop'
in_time 'back_euler=yes gmin_step=yes gmin_init=no gmin_start=0'
both 'gmin stepping where it is needed' 0 0 ''
expect 'is told all the same' 1 "$("$tnl" check deck.in | grep -c 'warning: gmin_start must be above zero: a solve')"
in_time 'back_euler=yes gmin_step=no gmin_start=0'
both 'no gmin stepping' 0 0 ''
expect 'nothing to tell' 'deck.in: no faults' "$("$tnl" check deck.in)"
in_time 'back_euler_auto=yes fctr_stepinc=0.5 itmax_trns=1000000'
both 'steps that become ever shorter' 3 1 'deck.in:13:10: error: the file gets more rows than limit_lines allows (100000)'
in_time 'back_euler_auto=yes fctr_stepinc=0.5 itmax_trns=1000000' ' limit_lines=200000'
both 'and may' 0 0 ''
rows=$(wc -l <deck.in.run/out.dat)
expect 'as many as (40 - 2) us/0.2 ns' yes "$([ "$rows" -ge 190000 ] && [ "$rows" -le 190100 ] && echo yes || echo "$rows")"
for words in 'chk_spice=no chk_delx_volt=yes' 'chk_spice=no chk_delx_kcl=yes' 'constant_step=yes'; do
    in_time "$words"
    both "$words" 0 0 ''
done

no_faults
