#!/bin/sh
# What is chosen by options: columns by number, ends of axes, words of method:. Arguments: the program, a folder to work in,
# the folder of the source tree.
arguments='tnl work source'
. "$(dirname -- "$0")/expect.sh"

words_of() { # file: the words in the picture, one a line
    sed -n 's/.*<text[^>]*>\(.*\)<\/text>.*/\1/p' "$1"
}
count() { # word: lines of words.txt that are it
    grep -cxF -- "$1" words.txt
}
frames_of() { grep -c '<rect .*fill="none"' "$1"; }

mkdir a.run
awk 'BEGIN { for (i = 0; i <= 100; i++) printf "%.6e %.6e %.6e %.6e\n", i * 1e-3, 1 + i, 2 + i, 0.01 * i }' >a.run/wave.dat
cat >a.run/run.json <<'JSON'
{"title": "t", "state": "complete", "files": [{"path": "wave.dat", "kind": "trns", "rows": 101, "columns": [
 {"name": "time", "unit": "s"}, {"name": "vin", "unit": "V"}, {"name": "vout", "unit": "V"}, {"name": "i", "unit": "A"}]}]}
JSON

# ---- columns by number
expect 'numbers share a panel' 0 "$(status_of "$tnl" plot a.run vin vout i --panel 2,4 -o x.svg)"
expect 'names share a panel' 0 "$(status_of "$tnl" plot a.run vin vout i --panel vin,i -o names.svg)"
cmp x.svg names.svg || expect 'pictures by number and by name' same different
words_of x.svg >words.txt
expect 'a column is drawn once' 1 "$(count vin)"
expect 'beside the other' 1 "$(count i)"
expect 'and the third by itself' 2 "$(frames_of x.svg)"
expect 'an axis by number' 0 "$(status_of "$tnl" plot a.run vin i --y 2=0:3 -o y.svg)"
expect 'and by name' 0 "$(status_of "$tnl" plot a.run vin i --y vin=0:3 -o names.svg)"
cmp y.svg names.svg || expect 'axes by number and by name' same different
expect 'a column that is not drawn' 2 "$(status_of "$tnl" plot a.run vin --y 4=0:3 -o y.svg)"
expect 'is named' 'tnl: --y: i is drawn in no panel with an axis' "$(cat err.txt)"

# ---- logarithmic axes
for ends in -1:10 0: vin=0:10; do
    expect "a logarithmic axis with ends $ends" 2 "$(status_of "$tnl" plot a.run vin vout i --log-y --y $ends -o log.svg)"
    expect "$ends: no picture" no "$([ -e log.svg ] && echo yes || echo no)"
done
expect 'ends above 0' 0 "$(status_of "$tnl" plot a.run vin vout i --log-y --y 10m:100 -o log.svg)"

# ---- words of method:
expect 'names of the words that speak of something' 0 "$(status_of "$tnl" list --methods --names trbdf2)"
expect 'are those' yes "$(grep -qx trbdf2_tolr out.txt && ! grep -qx itmax_newton out.txt && echo yes)"
expect 'of as many as in the list' "$("$tnl" list --methods trbdf2 | grep -c '^  ')" "$(grep -c . out.txt)"
expect 'names of nothing' 1 "$(status_of "$tnl" list --methods --names nosuchword)"
expect 'are none' '' "$(cat out.txt)"
expect 'all names' "$(grep -c '^| `' "$source/docs/method.md")" "$("$tnl" list --methods --names | grep -c .)"
expect 'one word as Markdown' 0 "$(status_of "$tnl" describe trbdf2 --md)"
expect 'is a page' '# `trbdf2`, a word of `method:`' "$(head -n 1 out.txt)"
expect 'with the row of the page of all' "$(grep '^| `trbdf2` ' "$source/docs/method.md")" "$(tail -n 1 out.txt)"

no_faults
