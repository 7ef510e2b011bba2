#!/bin/sh
# Two examples, each with a mistake of the kind that people make: `tnl check` and `tnl run` must name its line and its
# cause. Arguments: the program, a folder to work in, the folder of the source tree.
arguments='tnl work source'
. "$(dirname -- "$0")/expect.sh"
mistakes=0

fault() {
    printf '%s\n' "$1"
    sed 's/^/    /' out.txt
    faults=$((faults + 1))
}

# mistake NAME EXAMPLE LINE PHRASE [EDIT]...: the example, changed by sed; LINE of the changed deck and PHRASE (a part of
# the text) must come from both commands.
mistake() {
    name=$1 example=$2 line=$3 phrase=$4
    shift 4
    mistakes=$((mistakes + 1))
    set -- "$@" "$source/examples/$example/deck.in"
    sed "$@" >"$name.in" || exit 1
    if cmp -s "$name.in" "$source/examples/$example/deck.in"; then
        : >out.txt
        fault "$name: the edit changes nothing"
    fi
    for command in check run; do
        wanted=3
        [ "$command" = run ] && wanted=1
        "$tnl" "$command" "$name.in" >out.txt 2>&1 </dev/null
        status=$?
        [ "$status" -eq "$wanted" ] || fault "$name: tnl $command ends with status $status, not $wanted"
        # The place and the cause in one line.
        if ! grep -F -- "$name.in:$line:" out.txt | grep -qF -- "$phrase"; then
            fault "$name: tnl $command does not name line $line with \"$phrase\""
        fi
    done
}
# The same for a mistake that the simulator does not stop at: it solves something else, and only the check can tell.
silent_mistake() {
    name=$1 example=$2 line=$3 phrase=$4
    shift 4
    mistakes=$((mistakes + 1))
    sed "$@" "$source/examples/$example/deck.in" >"$name.in" || exit 1
    "$tnl" check --strict "$name.in" >out.txt 2>&1 </dev/null
    status=$?
    [ "$status" -eq 3 ] || fault "$name: tnl check --strict ends with status $status, not 3"
    grep -F -- "$name.in:$line:" out.txt | grep -qF -- "$phrase" ||
        fault "$name: tnl check does not name line $line with \"$phrase\""
}

mistake type buck_control 6 'no element type swich_g1 is installed for eelement; near names: switch_g1' -e '6s/switch_g1/swich_g1/'
mistake family buck_control 14 'no element type const is installed for eelement' -e '14s/.*/eelement name=LOAD type=const y=g_load/'
mistake parameter buck_control 8 'l has no terminal or parameter L; near names: l' -e '8s/l=470u/L=470u/'
mistake parameter_2 rectifier 7 'diode_r has no terminal or parameter ron; near names: r_on' -e '7s/v_on=0.7/ron=0.7/'
mistake terminal buck_control 10 'R1 (r) has no terminal n' -e '10s/ n=0//'
mistake equal_sign buck_control 9 'c has no terminal or parameter c22u' -e '9s/c=22u/c22u/'
mistake no_value rectifier 11 'there is no value behind r' -e '11s/r=20/r=/'
mistake no_end_solve rectifier 20 'end_solve is missing before this statement' -e '20d'
mistake no_end_output rectifier 19 'end_output is missing before this statement' -e '19d'
mistake suffix buck_control 9 'this is no number: 22uF' -e '9s/22u/22uF/'
mistake number buck_control 10 'this is no number: 1o' -e '10s/r=10/r=1o/'
mistake two_rules buck_control 39 'two rules for the time steps: gear2 and trapezoidal' -e '39s/gear2=yes/& trapezoidal=yes/'
mistake method_word buck_control 39 'method: knows no word eventrestart; near names: event_restart' -e '39s/event_restart/eventrestart/'
mistake no_t_end buck_control 39 'a trns block needs the time at which it ends' -e '39s/t_end=30m//'
mistake no_step rectifier 24 'a trns block needs its time step' -e '24s/delt_const=[^ ]*//'
mistake no_refnode buck_control 2 'the circuit has no refnode statement' -e '3d'
mistake refnode buck_control 3 'the reference node gnd is used by no element' -e '3s/0/gnd/'
mistake quantity buck_control 27 'L1 (l) offers no current' -e '27s/i_of_L1/current_of_L1/'
mistake outvar buck_control 27 'there is no element named L2; near names: L1' -e '27s/i_of_L1/i_of_L2/'
mistake outvar_node rectifier 12 'there is no node uot; near names: out' -e '12s/nodev_of_out/nodev_of_uot/'
mistake column buck_control 42 'no outvar: is named vot; near names: vout' -e '42s/vout/vot/'
mistake name buck_control 13 'the name R1 is repeated: line 10 has it too' -e '13s/name=R2/name=R1/'
mistake node buck_control 8 'in start-up, node sww has no path to the reference node 0 but through L1' -e '8s/p=sw/p=sww/'
mistake floating buck_control 14 'nodes y, z: no element connects them with the reference node 0' -e '13a eelement name=R9 type=r p=y n=z r=1'
mistake voltage_loop buck_control 6 'a loop of ideal voltage sources: V1, V2' -e '5a eelement name=V2 type=vsrcdc p=in n=0 vdc=23'
mistake startup_loop rectifier 6 'in start-up, where capacitors have a given voltage, a loop of ideal voltages: V1, C2' -e '5a eelement name=C2 type=c p=a n=b'
mistake no_end_circuit buck_control 28 'end_circuit is missing before this statement' -e '28d'
mistake sweep buck_control 31 'there is no element named R9' -e '30s/startup/dc/' -e '30a vary_parm r_of_R9 from 1 to 2 type linear n_points 3'
mistake sweep_in_time rectifier 23 'vary_parm is not allowed in a trns block' -e '23s/.*/vary_parm r_of_R1 from 1 to 2 type linear n_points 3/'
mistake filename buck_control 31 'this output block names no file' -e '32d'
mistake solve_type buck_control 30 'there is no solve_type start; the block would solve nothing, without a word; near names: startup' -e '30s/startup/start/'
mistake plus buck_control 1 "a '+' continues the statement before it, and there is none" -e '1s/^/+ /'
mistake data_file buck_control 16 'the file points.txt does not exist' -e '16s/.*/gelement name=REF type=pwl_file y=v_ref file=points.txt/'
mistake variable buck_control 21 'no block or meter writes the variable u_y' -e '21s/x2=u_i/x2=u_y/'
mistake gate buck_control 6 'no block or meter writes the variable gate' -e '6s/g=g /g=gate /'
mistake written_twice buck_control 21 'variable u_i is written by KI and by SUM' -e '21s/y=u/y=u_i/'
mistake statement buck_control 10 'the circuit block knows no statement elment; near names: delement, eelement' -e '10s/eelement/elment/'
mistake not_an_element buck_control 10 'the circuit block knows no statement R1' -e '10s/.*/R1 out 0 10/'
mistake too_many_rows rectifier 26 'the file gets more rows than limit_lines allows (100)' -e '26s/$/ limit_lines=100/'
mistake append rectifier 17 'append=yes, but there is no start.dat' -e '17s/$/ append=yes/'
mistake value rectifier 11 'r does not take r=0: the run would stop' -e '11s/r=20/r=0/'

silent_mistake negative_end rectifier 24 't_end is not behind t_start' -e '24s/t_end=/&-/'
silent_mistake negative_step rectifier 24 'delt_const must be above zero' -e '24s/delt_const=/&-/'
silent_mistake same_file buck_control 46 'the output block of line 41 writes wave.dat too' -e '46s/out.dat/wave.dat/'
silent_mistake control_word buck_control 48 'control: passes over the word fixed_intervall; near names: fixed_interval' -e '48s/interval/intervall/'
silent_mistake one_terminal buck_control 6 'node inn has this one connection only; near names: in' -e '6s/p=in/p=inn/'
silent_mistake cut_off buck_control 39 'is cut off after itmax_trns=100000' -e '39s/itmax_trns=1000000//'

if [ "$faults" -ne 0 ]; then echo "$faults faults in $mistakes mistakes"; fi
[ "$faults" -eq 0 ]
