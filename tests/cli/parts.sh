#!/bin/sh
# The parts of models/parts give back the figures of the data sheets that stand in their heads. Arguments: the program, a
# folder to work in, the folder of the source tree.
arguments='tnl work source'
. "$(dirname -- "$0")/expect.sh"

# One part in as many circuits as it has figures, each of them a column: within a hundredth of what is wanted.
figures() { # part, elements (lines), output variables, wanted numbers
    names=$(for pair in $3; do echo "${pair%%=*}"; done | tr '\n' ' ')
    cat >"$1.in" <<END
title: figures of $1
include $source/models/parts/$1.par
begin_circuit
refnode 0
$2
outvar: $3
end_circuit
begin_solve
solve_type dc
method: norm_2=1e-12 itmax_newton=200
begin_output
filename out.dat
variables: $names
end_output
end_solve
end_cf
END
    expect "$1: check" 0 "$(status_of "$tnl" check "$1.in")"
    expect "$1" 0 "$(status_of "$tnl" run "$1.in")"
    expect "$1: what differs by more than a hundredth" '' "$(awk -v names="$names" -v wanted="$4" '{
        n = split(wanted, w, " "); split(names, name, " ")
        if (n != NF) print n " figures, " NF " columns"
        for (i = 1; i <= n; i++) if (!(($i - w[i]) ^ 2 <= (0.01 * w[i]) ^ 2)) print name[i] " = " $i ", not " w[i] }' "$1.in.run/out.dat")"
}
drive() { # name, node, A: a current into the node
    echo "eelement name=I$1 type=isrcac p=0 n=$2 idc=$3"
}
hold() { # name, node, V
    echo "eelement name=V$1 type=vsrcdc p=$2 n=0 vdc=$3"
}
diode() { # name, anode, cathode, model
    echo "eelement name=D$1 type=diode_rs p=$2 n=$3 model=$4"
}
forward() { # model, three currents
    for k in 1 2 3; do
        shift
        [ $k = 1 ] && model=$name
        drive $k a$k "$1"
        diode $k a$k 0 "$model"
    done
}

name=1N4148
figures 1n4148 "$(forward - 1m 10m 100m; drive 4 b 100u; diode 4 0 b $name)" \
    'v1=nodev_of_a1 v2=nodev_of_a2 v3=nodev_of_a3 vr=nodev_of_b' '0.62 0.72 0.87 100'
name=1N4007
figures 1n4007 "$(forward - 10m 100m 1; drive 4 b 5u; diode 4 0 b $name)" \
    'v1=nodev_of_a1 v2=nodev_of_a2 v3=nodev_of_a3 vr=nodev_of_b' '0.65 0.77 0.93 1000'
name=1N5819
figures 1n5819 "$(forward - 100m 1 3; drive 4 b 1m; diode 4 0 b $name)" \
    'v1=nodev_of_a1 v2=nodev_of_a2 v3=nodev_of_a3 vr=nodev_of_b' '0.30 0.41 0.55 40'
# Two points about the zener voltage, 1 mA apart: 2.5 mV.
name=1N4733
figures 1n4733 "$(forward - 5m 20m 20m; drive 4 b 49m; diode 4 0 b $name; drive 5 c 49.5m; diode 5 0 c $name
    drive 6 d 48.5m; diode 6 0 d $name; echo 'eelement name=E1 type=vcvs p=z n=0 cp=c cn=d k=1k'; echo 'eelement name=RZ type=r p=z n=0 r=1k')" \
    'v1=nodev_of_a1 v2=nodev_of_a2 vz=nodev_of_b dv=nodev_of_z' '0.70 0.77 5.1 2.5'

# Base currents that the gains of the figures ask for, the collector at 5 V; and the conductance between 4 V and 6 V.
transistor() { # model, sign, collector, base
    echo "eelement name=Q$3 type=bjt_spice_5 c=$3 b=$4 e=0 s=0 model=$1"
}
bipolar() { # part, model, sign, vbe, base currents at 0.1, 1, 10, 100 mA, uS
    figures "$1" "$(for k in 1 3 4; do
        hold $k c$k "${3}5"
        transistor "$2" "$3" c$k b$k
    done
    drive 1 b1 "$3$5"; drive 3 b3 "$3$6"; drive 4 b4 "$3$7"; hold b b2 "$3$4"; hold 2 c2 "${3}5"; transistor "$2" "$3" c2 b2
    hold b5 b5 "$3$4"; hold 5 c5 "${3}4"; transistor "$2" "$3" c5 b5; hold b6 b6 "$3$4"; hold 6 c6 "${3}6"; transistor "$2" "$3" c6 b6
    echo "eelement name=F1 type=cccs p=0 n=x br=V6 k=0.5M"; echo "eelement name=F2 type=cccs p=x n=0 br=V5 k=0.5M"
    echo 'eelement name=RX type=r p=x n=0 r=1')" \
        'i1=i_c_of_Qc1 i2=i_c_of_Qc2 i3=i_c_of_Qc3 i4=i_c_of_Qc4 g=nodev_of_x' "${3}1e-4 ${3}1e-3 ${3}1e-2 ${3}1e-1 ${8}"
}
bipolar 2n3904 2N3904 '' 0.66 0.8333333u 55.55556u 1.666667m -12
bipolar 2n3906 2N3906 - 0.67 0.6666667u 55.55556u 1.666667m 30

mos() { # name, drain, gate
    echo "eelement name=M$1 type=mos_level1 d=$2 g=$3 s=0 b=0 model=2N7000"
}
# The transconductance: 0.2 A stands 2 id/gm = 1.25 V above the threshold, and 10 mV more are 3.2 mA.
figures 2n7000 "$(drive 1 d1 1m; mos 1 d1 d1; hold 2 g2 10; drive 2 d2 0.5; mos 2 d2 g2; drive 3 0 0; drive 4 n4 -0.2; mos 4 n4 0
    hold 5 d5 10; hold 6 g6 3.2583; mos 5 d5 g6; hold 7 d7 10; hold 8 g8 3.2683; mos 7 d7 g8)" \
    'vth=nodev_of_d1 von=nodev_of_d2 vsd=nodev_of_n4 ia=i_d_of_M5 ib=i_d_of_M7' '2.1 0.6 -0.85 0.2 0.2032'
figures 2n3819 "$(hold 1 d1 15; echo 'eelement name=J1 type=jfet_spice_1 d=d1 g=0 s=0 model=2N3819'
    hold 2 d2 16; echo 'eelement name=J2 type=jfet_spice_1 d=d2 g=0 s=0 model=2N3819'
    hold 3 d3 15; hold g3 g3 -0.1; echo 'eelement name=J3 type=jfet_spice_1 d=d3 g=g3 s=0 model=2N3819'
    drive 4 g4 1m; echo 'eelement name=J4 type=jfet_spice_1 d=0 g=g4 s=0 model=2N3819')" \
    'i1=i_d_of_J1 i2=i_d_of_J2 i3=i_d_of_J3 vg=nodev_of_g4' '1e-2 1.0025e-2 9.344e-3 0.7'

no_faults
