#!/bin/sh
# Block diagrams from outside: check, run, measure, plot, describe. Arguments: the program, a folder to work in, the
# folder of the source tree.
arguments='tnl work source'
. "$(dirname -- "$0")/expect.sh"

# The deck of the page for users, as it stands there: 1 - exp(-100 t).
sed -n '/^    title: a lag/,/^    end_cf/p' "$source/docs/diagrams.md" | sed 's/^    //' >lag.in
expect 'the deck has no faults' 'lag.in: no faults' "$("$tnl" check lag.in 2>&1)"
expect 'it runs' 0 "$(status_of "$tnl" run lag.in)"
expect 'its rows are those of the steps' 501 "$(wc -l <lag.in.run/wave.dat | tr -d ' ')"
expect 'and of the exponential' 0 "$(status_of "$tnl" assert lag.in 'at(x, 0) == 0' '0.6321204 < at(x, 10m) < 0.6321207' 'max(x) < 0.99327')"
expect 'the record says what they are' 'trns time x e False' "$(python3 -c '
import json
[f] = json.load(open("lag.in.run/run.json"))["files"]
print(f["kind"], *[c["name"] for c in f["columns"]], f["begins_with_guess"])')"
expect 'a picture' 0 "$(status_of "$tnl" plot lag.in -o lag.svg)"
expect 'an export' 0 "$(status_of "$tnl" export lag.in --csv -o lag.csv)"

# An integrator in a loop is needed.
sed 's/type=intgrtr x=e y=x k=100/type=sum_2 x1=e x2=u y=x/' lag.in >loop.in
expect 'a loop without a state' 3 "$(status_of "$tnl" check loop.in)"
expect 'is told as a circle' 1 "$(grep -c 'E (line 4) -> X (line 5) -> E (line 4)' out.txt)"
expect 'and stops a run' 1 "$(status_of "$tnl" run loop.in)"
expect 'which tells it too' 1 "$(cat out.txt err.txt | grep -c 'E (line 4) -> X (line 5) -> E (line 4)')"

expect 'blocks are described' 0 "$(status_of "$tnl" describe x:intgrtr)"
expect 'by family' 1 "$(grep -c 'xelement name=NAME type=intgrtr' out.txt)"
expect 'and listed' 1 "$("$tnl" list | grep -c '^x: explicit blocks (xelement)')"
expect 'and named for completion' 1 "$("$tnl" list --names | grep -c '^intgrtr_reset_2$')"
expect 'an example to start from' 0 "$(status_of "$tnl" new mine --from dc_drive)"
expect 'runs' 0 "$(status_of "$tnl" run mine.in)"
no_faults
