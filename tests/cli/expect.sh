# expect.sh -- what the tests from outside share. Each sets `arguments`, the names of its arguments, and reads this; it
# goes on in an empty folder, $work, which is one of them.
set -u
for name in $arguments; do
    eval "$name=\$1"
    shift
done
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
status_of() { # command...; its text is in out.txt, its messages in err.txt
    "$@" >out.txt 2>err.txt </dev/null
    echo $?
}
# The sizes that tmpdim.in must have, and others.
sizes() { # size, names...
    of_each=$1
    shift
    for key in M_ECT_ND_TMP M_GCT_VR_TMP M_DCT_ND_TMP M_XCT_VR_TMP MNZ_EBCE MNZ_GBCE MNZ_XBCE MNZ_EBCE_AC MNZ_GBCE_AC \
        MNZ_XBCE_AC F_MNZ_W M_MATTTLOP2 M_MATTTLOP3 M_AVERAGE_MV_GBE M_RMS_MV_GBE M_AVERAGE_MV_XBE M_RMS_MV_XBE "$@"; do
        echo "$key $of_each"
    done
}
# All that the simulator needs in the current folder but a deck.
working_folder() { # folder of the installed libraries, size
    mkdir -p .tnlaux
    cp "$1"/*.aux "$1"/*.lst .tnlaux/
    # A library of composites holds 49, fewer than are installed: those that decks of the tests name.
    common='ammeter ammeter_fb c c1 cccs ccvs clock dac1 dac1a dac4 dac8 diode diode_r diode_spice_1
        ground_dummy_1 ipulse isrc_1 isrcac l l_gap pwl20 r r_area r_pot r_time spdt1 switch_d switch_e
        switch_g1 thyristor_g triangle_1 vccs vcvs voltmeter_fb vpulse vsrc_1 vsrcac vsrcac_ramp vsrcdc
        xfmr xfmr_2w_ideal'
    awk -v common="$common" 'BEGIN { split(common, names); for (k in names) common_name["name=" names[k]] = 1 }
        /^ece name=/ { kept = $2 in common_name } kept' "$1/eels.aux" >.tnlaux/eels.aux
    sizes "$2" >tmpdim.in
}
# Whether a limit of memory can be tried: the address sanitizer reserves more than any.
takes_memory_limit() { # program
    ! grep -q __asan_init "$1"
}

# The last command of a test.
no_faults() {
    if [ "$faults" -ne 0 ]; then echo "$faults faults"; fi
    [ "$faults" -eq 0 ]
}
