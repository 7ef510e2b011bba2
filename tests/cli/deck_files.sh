#!/bin/sh
# Decks of several files, and of as many lines as there may be, from outside. Arguments: the program, a folder to work in,
# the folder of the source tree.
arguments='tnl work source'
. "$(dirname -- "$0")/expect.sh"

# A divider of 10 V into 1 kOhm and a model of 3 kOhm, which stands in two files.
echo 'emodel name=big type=r' >mm.lib
sed 's/^begin_circuit/include mm.lib\n+ r=3k\n&/; s/type=r p=out n=0/type=r model=big p=out n=0/; s/^vary_parm.*//; s/r_of_R2 vout/vout/' \
    "$source/examples/divider.in" >model.in
expect 'a model and what continues it' 0 "$(status_of "$tnl" run -q model.in)"
expect 'is of its value' '7.500000e+00' "$(tr -d ' ' <model.in.run/out.dat)"

# What nobody reads.
(cat "$source/examples/divider.in" && printf 'ece is a word of mine\ninclude notes.txt\n') >behind.in
for command in check run; do expect "words behind the end: $command" 0 "$(status_of "$tnl" $command behind.in)"; done

# Places of what makes no deck.
mkdir 'a:7: b'
printf 'title: t\n  include nosuch.in\n' >'a:7: b/d.in'
expect 'a folder with a colon' 3 "$(status_of "$tnl" check 'a:7: b/d.in')"
expect 'is the place' 'a:7: b/d.in:2:3: error: cannot read a:7: b/nosuch.in: No such file or directory' "$(head -n 1 out.txt)"
expect 'with its line' '  include nosuch.in' "$(sed -n 2p out.txt | cut -c 3-)"
(cat "$source/examples/divider.in" && yes '#' | head -n 2000000) >long.in
expect 'a line too many' 3 "$(status_of "$tnl" check long.in)"
expect 'has its file' 'long.in:1:1: error: a deck has at most 2000000 lines' "$(head -n 1 out.txt)"
expect 'and a summary' 'long.in: 1 error, 0 warnings' "$(tail -n 1 out.txt)"
head -n 2000000 long.in >most.in
expect 'as many as there may be' 0 "$(status_of "$tnl" check most.in)"

no_faults
