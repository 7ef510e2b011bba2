#!/bin/sh
# An element is added by adding its files: a source of one's own is generated, compiled, listed, described, has a page,
# and a check holds decks to what its file says of it. Arguments: the generator, the front end, the unit tests of the
# front end, a folder to work in, the folder of the source tree, the compiler.
arguments='generate front_end unit_tests work source compiler'
. "$(dirname -- "$0")/expect.sh"
mkdir -p bin models/e/mine
cp "$front_end" bin/tnl
cp "$(dirname -- "$front_end")/tarnel" bin/tarnel  # draws responses
has() { grep -q -F -e "$2" "$1" && echo yes || echo no; }

sed -e 's/^ebe name=vsrcdc .*/ebe name=mine startup_sprt=yes pure=yes/' -e '/^#=/d' "$source/models/e/sources/vsrcdc.ebe" |
    sed -e '/^ebe name=/a #= limit 0 < vdc*k_scale <= 1e6\n#= branch voltage p n\n#= refuses dc\n#= jumps' >models/e/mine/mine.ebe
sed -e 's/^ece name=vsrcdc /ece name=mine /' -e 's/type=vsrcdc /type=mine /' -e 's/^#: Constant.*/#: A source of mine/' \
    "$source/models/e/sources/vsrcdc.ece" >models/e/mine/mine.ece

expect 'its function' 0 "$(status_of "$generate" generated alone models/e/mine/mine.* "$source/models/e/sources/vsrc_ac.sse")"
expect 'compiles' 0 "$(status_of "$compiler" -std=c++20 -fsyntax-only -I"$source/src" -I"$source/src/base" \
    -I"$source/src/library/basic" -I"$source/src/models" generated/.tnlaux/regebe.cpp)"
expect 'is registered by its name' yes "$(has generated/.tnlaux/regebe.cpp '{"mine", e_mine, ')"

# Composites with functions of their own, one of blocks beside it.
sed -e 's/^ece name=l_gap /ece name=my_l /' -e 's/type=l_gap /type=my_l /' -e 's/^#: Inductor.*/#: A gapped inductor/' \
    "$source/models/e/magnetics/l_gap.ece" >models/e/mine/my_l.ece
sed -e '/^#~/d' -e 's/^gce name=const /gce name=my_k compute_rparms=yes /' -e '/^#>/s/type=const /type=my_k /' -e 's/^#: .*/#: A constant that is 7/' \
    -e 's/^C:.*/C:\nvariables:\nsource:\n   if (flags->rparms) rparm[nr_k] = 7.0;/' \
    "$source/models/g/sources/const.gce" >models/e/mine/my_k.gce

expect 'all elements and it' 0 "$(status_of "$generate" generated share $(find "$source/models" -name '*.???') models/e/mine/*.?[bc]e)"
for file in regece reggce; do
    expect "functions of composites compile: $file" 0 "$(status_of "$compiler" -std=c++20 -fsyntax-only -I"$source/src" \
        -I"$source/src/base" generated/.tnlaux/$file.cpp)"
done
expect 'one of electrical elements is registered' yes "$(has generated/.tnlaux/regece.cpp '{"my_l", my_l_acpe, 0, 0, 6, 3}')"
expect 'one of blocks has no output values' yes "$(has generated/.tnlaux/reggce.cpp '{"my_k", without_outvar<my_k_acpg>, 0, 0, 3, 0}')"
expect 'the tests of installed elements hold' 0 "$(TARNEL_SHARE="$work/share" status_of "$unit_tests" \
    --gtest_filter='installed_elements.*:model_rules.*:library_faults.are_none_in_what_the_build_installs')"
expect 'listed' '    mine  A source of mine' "$(bin/tnl list 'source of mine' | grep '^    ')"
expect 'described' yes "$(bin/tnl describe mine >sheet.txt && has sheet.txt '  a run stops unless 0 < vdc*k_scale <= 1e6')"
bin/tnl describe --all --md -o pages
expect 'has a page' yes "$(has pages/e_mine.md '- between `p` and `n`: an ideal voltage')"
expect 'which the index knows' yes "$(has pages/README.md '| [`mine`](e_mine.md) | A source of mine |')"
( cd "$source/docs/elements" && for page in *.md; do [ "$page" = README.md ] || cmp "$page" "$work/pages/$page"; done ) >pages.txt 2>&1
expect 'the pages of the others stay' '' "$(cat pages.txt)"

deck() { # solve_type, method words, sed command
    sed -e "$3" >d.in <<EOF
title: t
begin_circuit
refnode 0
eelement name=V1 type=vsrcdc p=in n=0 vdc=10
eelement name=R1 type=r p=in n=out r=1k
eelement name=M1 type=mine p=out n=0 vdc=5
outvar: v=nodev_of_out i=i_of_M1
end_circuit
begin_solve
solve_type $1
method: $2
begin_output
filename o.dat
variables: v i
end_output
end_solve
end_cf
EOF
    bin/tnl check --json d.in | sed -n 's/.*"code": "\(.*\)",/\1/p' | tr '\n' ' '
}
trns='t_end=1m delt_const=1u back_euler=yes'
expect 'a deck with it is sound' '' "$(deck trns "$trns" '')"
expect 'its limits are held' 'bad-value ' "$(deck trns "$trns" 's/vdc=5/vdc=0/')"
expect 'both of them' 'bad-value ' "$(deck trns "$trns" 's/vdc=5/vdc=2M/')"
expect 'its words are known' 'unknown-word ' "$(deck trns "$trns" 's/vdc=5/vdd=5/')"
expect 'its branch closes loops' 'voltage-loop ' "$(deck trns "$trns" 's/p=out/p=in/;s/n=out/n=0/;s/of_out/of_in/')"
expect 'its jumps matter' 'event-restart ' "$(deck trns 't_end=1m delt_const=1u trapezoidal=yes' '')"
expect 'it refuses dc' 'no-dc ' "$(deck dc dmp=no '')"

no_faults
