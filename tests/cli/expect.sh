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
    # A library of composites holds 49, fewer than are installed.
    awk '/^ece name=/ { left_out = $2 ~ /^name=(bjt_|jfet_|mos_|cool_|r_|diode_r_|diode_rs|diode_spice_|[cl]_|solar_|battery|vsrc_(1a|am|fm|x)|triangle_[23]|.*(pwl20|pulse20)$|c[cv][cv]s_|vcvs_|n?and_2|x?n?or_2|not$|cmprtr|sampler)/ } !left_out' "$1/eels.aux" >.tnlaux/eels.aux
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
