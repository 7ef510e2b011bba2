#!/bin/sh
# Commands of tnl about what is installed, from outside: statuses, files, and where their text goes. Arguments: the
# program, a folder to work in, the folder of the source tree.
set -u
tnl=$1
work=$2
source=$3
rm -rf "$work"
mkdir -p "$work"
cd "$work" || exit 1
faults=0

expect() { # what, wanted, got
    if [ "$2" != "$3" ]; then
        printf '%s\n  expected: %s\n  got:      %s\n' "$1" "$2" "$3"
        faults=$((faults + 1))
    fi
}
status_of() { # command...
    "$@" >out.txt 2>err.txt </dev/null
    echo $?
}
has() { # pattern, file
    grep -q -e "$1" "$2" && echo yes || echo no
}

# ---- list, describe ---------------------------------------------------------------------------------------------------

expect 'list' 0 "$(status_of "$tnl" list)"
expect 'an element with its summary' yes "$(has '^    r  *Resistor' out.txt)"
expect 'its group' yes "$(has '^  passive$' out.txt)"
expect 'both families' '2' "$(grep -c '^[a-z]*: ' out.txt)"
expect 'nothing on standard error' '' "$(cat err.txt)"
expect 'list of a word' 0 "$(status_of "$tnl" list THYRISTOR)"
expect 'has the element of that name' yes "$(has '^    thyristor_g' out.txt)"
expect 'and no other' 1 "$(grep -c '^    ' out.txt)"
expect 'a word that nothing has' 0 "$(status_of "$tnl" list nosuchword)"
expect 'gives nothing' '' "$(cat out.txt)"
expect 'and says so' 'tnl: no element speaks of nosuchword' "$(cat err.txt)"
expect 'describe' 0 "$(status_of "$tnl" describe c)"
expect 'a start value with its unit' yes "$(has '^  v0  *0  *V' out.txt)"
expect 'a name of two families' 0 "$(status_of "$tnl" describe clock)"
expect 'shows both' 2 "$(grep -c '^[eg]:clock ' out.txt)"
expect 'or the one of a family' 0 "$(status_of "$tnl" describe g:clock)"
expect 'alone' 'g:clock' "$(head -n 1 out.txt | cut -d ' ' -f 1)"
expect 'an unknown element is wrong usage' 2 "$(status_of "$tnl" describe vsrdc)"
expect 'near names are told' yes "$(has 'vsrdc.*near names: vsrcdc' err.txt)"
expect 'nothing on standard output' '' "$(cat out.txt)"
expect 'describe needs an element' 2 "$(status_of "$tnl" describe)"
if [ -c /dev/full ]; then
    "$tnl" list >/dev/full 2>err.txt
    expect 'a full disk' 5 $?
fi
if command -v python3 >/dev/null 2>&1; then
    "$tnl" describe r --json | python3 -c '
import json, sys
(r,) = json.load(sys.stdin)
assert [t["name"] for t in r["terminals"]] == ["p", "n"], r
assert r["parameters"][0]["default"] == "1" and r["parameters"][0]["unit"] == "ohm", r
' || faults=$((faults + 1))
    expect 'all elements as JSON' 0 "$("$tnl" list --json | python3 -c 'import json, sys; json.load(sys.stdin)' && echo 0)"
fi

# Pages of the manual are those of this build.
expect 'pages' 0 "$(status_of "$tnl" describe --all --md -o pages)"
if ! diff -r "$source/docs/elements" pages >differences.txt; then
    head -n 20 differences.txt
    expect 'docs/elements is current; renew it with: ./tnl describe --all --md -o docs/elements' yes no
fi

if [ "$faults" -ne 0 ]; then echo "$faults faults"; fi
[ "$faults" -eq 0 ]
