#!/bin/sh
# Commands of tnl about what is installed, from outside: statuses, files, and where their text goes. Arguments: the
# program, a folder to work in, the folder of the source tree.
arguments='tnl work source'
. "$(dirname -- "$0")/expect.sh"
has() { # pattern, file
    grep -q -e "$1" "$2" && echo yes || echo no
}

# ---- list, describe ---------------------------------------------------------------------------------------------------

expect 'list' 0 "$(status_of "$tnl" list)"
expect 'an element with its summary' yes "$(has '^    r  *Resistor' out.txt)"
expect 'its group' yes "$(has '^  passive$' out.txt)"
expect 'the families' 'e g d x gm' "$(sed -n 's/^\([a-z]*\): .*/\1/p' out.txt | tr '\n' ' ' | sed 's/ $//')"
expect 'nothing on standard error' '' "$(cat err.txt)"
expect 'list of a word' 0 "$(status_of "$tnl" list SWITCH_G1)"
expect 'has the element of that name' yes "$(has '^    switch_g1' out.txt)"
expect 'and no other' 1 "$(grep -c '^    ' out.txt)"
expect 'words in any order' 0 "$(status_of "$tnl" list controller PI)"
expect 'find what has them all' yes "$(has '^    pi  *PI controller' out.txt)"
expect 'shows the one that is called so' yes "$(has '^  gelement name=C1 type=pi x=err y=u ' out.txt)"
expect 'one hit' 0 "$(status_of "$tnl" list droop)"
expect 'shows how a deck says it' yes "$(has '^  gelement name=D1 type=droop ' out.txt)"
expect 'a part of the trade' 0 "$(status_of "$tnl" list 1n4148)"
expect 'has its include line' 1 "$(grep -c '^      include .*/parts/1n4148.par$' out.txt)"
expect 'of a file that is there' yes "$(has '^emodel name=1N4148 ' "$(sed -n 's/^ *include //p' out.txt)")"
expect 'and its statement' yes "$(has '^  eelement name=X1 type=diode_rs model=1N4148 p=p n=n$' out.txt)"
expect 'a kind of part' 0 "$(status_of "$tnl" list zener)"
expect 'is told how to make' yes "$(has 'a Zener diode is a diode_rs with' err.txt)"
expect 'what has another name, too,' 0 "$(status_of "$tnl" list low pass)"
expect 'is found by its words' yes "$(has '^    filter_lp2 ' out.txt)"
expect 'and the other is named' yes "$(has 'of first order it is lag_1' err.txt)"
expect 'a word that nothing has' 1 "$(status_of "$tnl" list nosuchword)"
expect 'gives nothing' '' "$(cat out.txt)"
expect 'and says so' 'tnl: no element speaks of nosuchword' "$(cat err.txt)"
expect 'a type that no library has' 0 "$(status_of "$tnl" list ground)"
expect 'is listed with the others' yes "$(has '^    ground_dummy    *Joins a node with the reference node' out.txt)"
expect 'a misspelt name' 1 "$(status_of "$tnl" list vpluse)"
expect 'has near words' 'tnl: no element speaks of vpluse; near words: vpulse' "$(cut -d , -f 1 err.txt)"
expect 'a misspelt word of a description' 1 "$(status_of "$tnl" list resitor)"
expect 'has near words too' 'tnl: no element speaks of resitor; near words: resistor' "$(cut -d , -f 1 err.txt)"
expect 'a word of method: alone' 1 "$(status_of "$tnl" list itmax)"
expect 'is shown its list' yes "$(has 'tnl list --methods itmax' err.txt)"
expect 'which' 0 "$(status_of "$tnl" list --methods itmax_trns)"
expect 'is there' yes "$(has '^  itmax_trns  steps of a run at most.* .100000.$' out.txt)"
expect 'and no other' 1 "$(grep -c '^  ' out.txt)"
expect 'a word that method: does not have' 1 "$(status_of "$tnl" list --methods trbfd2)"
expect 'has near names' yes "$(has 'near names: trbdf2' err.txt)"
expect 'all words of method:' 0 "$(status_of "$tnl" list --methods --names)"
expect 'are words of describe, the first and the last' 0 "$(sed -n '1p;$p' out.txt | while read -r word; do "$tnl" describe "method:$word" >word.txt || echo "$word: $?"
    grep -q "^$word: a word of method:" word.txt || echo "$word"; done | wc -l)"
expect 'describe' 0 "$(status_of "$tnl" describe c)"
expect 'a start value with its unit' yes "$(has '^  v0  *0  *V' out.txt)"
expect 'a name of two families' 0 "$(status_of "$tnl" describe clock)"
expect 'shows both' 2 "$(grep -c '^[eg]:clock ' out.txt)"
expect 'or the one of a family' 0 "$(status_of "$tnl" describe g:clock)"
expect 'alone' 'g:clock' "$(head -n 1 out.txt | cut -d ' ' -f 1)"
expect 'an unknown element is nothing found, as in a list' 1 "$(status_of "$tnl" describe vsrdc)"
expect 'near names are told' yes "$(has 'vsrdc.*near names: vsrcdc' err.txt)"
expect 'nothing on standard output' '' "$(cat out.txt)"
expect 'the deck of a response' 0 "$(status_of "$tnl" describe lag_1 --response)"
cp out.txt response.in
expect 'runs' 0 "$(status_of "$tnl" run response.in)"
expect 'an element without a response' 1 "$(status_of "$tnl" describe pp_in_1 --response)"
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

expect 'the page of method:' 0 "$(status_of "$tnl" describe --methods --md -o method.md)"
if ! diff "$source/docs/method.md" method.md >differences.txt; then
    head -n 20 differences.txt
    expect 'docs/method.md is current; renew it with: ./tnl describe --methods --md -o docs/method.md' yes no
fi

# ---- examples, new ------------------------------------------------------------------------------------------------------

expect 'examples' 0 "$(status_of "$tnl" examples)"
expect 'a story in one line' yes "$(has '^boost  *Boost converter$' out.txt)"
expect 'every folder of examples is there' "$(for f in "$source"/examples/*/deck.in; do basename "$(dirname "$f")"; done)" \
    "$("$tnl" examples --names | grep -v '^divider$')"
expect 'new' 0 "$(status_of "$tnl" new first)"
expect 'gives the next command' 'tnl run first.in' "$(cat out.txt)"
expect 'which works' 0 "$(status_of "$tnl" run first.in)"
# Five time constants behind the step: 10 (1 - exp(-5)) V, 10 exp(-5) mA.
expect 'and charges the capacitor' yes "$(tail -n 1 first.in.run/out.dat |
    awk '{ print ($2 > 9.932 && $2 < 9.933 && $3 > 6.73e-5 && $3 < 6.75e-5) ? "yes" : "no" }')"
cp first.in kept
expect 'nothing is replaced' 5 "$(status_of "$tnl" new first.in --from pll)"
expect 'the name is told' yes "$(has '^tnl: cannot write first.in: it exists' err.txt)"
expect 'the deck stays' yes "$(cmp -s first.in kept && echo yes || echo no)"
expect 'from an example' 0 "$(status_of "$tnl" new second --from divider)"
expect 'it is the deck of the example' yes "$(cmp -s second.in "$source/examples/divider.in" && echo yes || echo no)"
expect 'an unknown example is wrong usage' 2 "$(status_of "$tnl" new third --from buck)"
expect 'near names are told here too' yes "$(has 'near names: buck_' err.txt)"
expect 'and nothing is written' no "$([ -e third.in ] && echo yes || echo no)"
expect 'a folder that is not there' 5 "$(status_of "$tnl" new no/such/deck)"

# ---- completion, man ----------------------------------------------------------------------------------------------------

expect 'an unknown shell' 2 "$(status_of "$tnl" completion csh)"
if command -v bash >/dev/null 2>&1; then
    "$tnl" completion bash >complete.bash
    cat >words.bash <<'EOF'
source ./complete.bash
COMP_WORDS=("$@")
COMP_CWORD=$(($# - 1))
_tnl
echo "${COMPREPLY[*]}"
EOF
    words() { bash words.bash "$tnl" "$@"; }
    expect 'commands are completed' 'describe' "$(words desc)"
    expect 'elements' 'vsrcac vsrcac_ramp' "$(words describe vsrca)"
    expect 'examples behind --from' 'rectifier rectifier_3ph rectifier_power rectifier_steady' "$(words new x --from rect)"
    expect 'and behind --from=' 'pll' "$(words new x --from = pl)"
    expect 'options' '--from' "$(words new --fr)"
    mkdir firm
    expect 'decks and folders on the way to them' 'first.in firm' "$(words run fir)"
    expect 'but no runs, no pictures' 'first.in firm' "$(: >first.svg; words check fir)"
    expect 'plot takes all of them' 'firm first.in first.in.run first.svg' "$(words plot fir | tr ' ' '\n' | sort | tr '\n' ' ' | sed 's/ $//')"
    expect 'names of pages' 'doctor' "$(words man doc)"
fi
for shell in zsh fish; do
    if command -v $shell >/dev/null 2>&1; then
        "$tnl" completion $shell >complete.$shell
        expect "$shell reads its completion" 0 "$(status_of $shell -n complete.$shell)"
    fi
done

expect 'man' 0 "$(status_of "$tnl" man)"
expect 'man of a command' 0 "$(status_of "$tnl" man describe)"
expect 'has its name' yes "$(has '^tnl\\-describe \\- ' out.txt)"
expect 'an unknown command' 2 "$(status_of "$tnl" man fly)"
expect 'all pages' 0 "$(status_of "$tnl" man -o man1)"
for page in man1/*.1; do
    if command -v groff >/dev/null 2>&1; then
        expect "groff on $page" '' "$(groff -ww -man -Tascii "$page" 2>&1 >/dev/null)"
    fi
    if command -v mandoc >/dev/null 2>&1; then # pages bear the version, no date
        expect "mandoc on $page" '' "$(mandoc -Tlint "$page" | grep -v 'missing date')"
    fi
    command=$(basename "$page" .1 | sed 's/^tnl-*//')
    if [ "$command" ]; then expect "$page is a command's" 0 "$(status_of "$tnl" "$command" --help)"; fi
done

# ---- doctor -------------------------------------------------------------------------------------------------------------

mkdir temporary
expect 'doctor' 0 "$(TMPDIR=$work/temporary status_of "$tnl" doctor)"
expect 'the simulator runs' yes "$(has '^ok .*simulator: .*/tarnel runs a small deck$' out.txt)"
expect 'nothing is left behind' '' "$(ls temporary)"
expect 'no colour in a file' no "$(has "$(printf '\033')" out.txt)"
# A tree without its simulator and with half of its libraries.
mkdir -p broken/bin broken/share
cp "$tnl" broken/bin/tnl
expect 'doctor of a broken tree' 5 "$(status_of broken/bin/tnl doctor)"
expect 'names what is missing' yes "$(has '^MISSING  libraries: .*ebes.aux is missing' out.txt)"
cp "$(dirname "$tnl")"/../share/*.* broken/share
expect 'the simulator is next' 5 "$(status_of broken/bin/tnl doctor --json)"
expect 'as JSON' yes "$(has '"well": false' out.txt)"
expect 'with its name' yes "$(has 'tarnel is missing' out.txt)"
printf '#!/bin/sh\necho 5.0 >out.dat\nexit 1\n' >broken/bin/tarnel
chmod +x broken/bin/tarnel
expect 'a simulator that fails' 5 "$(status_of broken/bin/tnl doctor)"
expect 'is told' yes "$(has '^MISSING  simulator: a small deck does not run' out.txt)"
TMPDIR=/nonexistent "$tnl" doctor >out.txt 2>err.txt
expect 'the folder for temporary files falls back to /tmp' 0 $?

no_faults
