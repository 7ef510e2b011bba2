#!/bin/sh
# The simulator in working folders that are broken: a clear text, status 1, rows before the stop on the disk, and never a
# crash. Arguments: the simulator, the folder of the installed libraries, a folder to work in.
arguments='tarnel share work'
. "$(dirname -- "$0")/expect.sh"
# A sound working folder in the current one, with the divider as its deck.
fresh() {
    cd "$work" || exit 1
    chmod -R u+rwx run 2>/dev/null
    rm -rf run
    mkdir run
    cd run || exit 1
    working_folder "$share" 1000
    deck 'eelement name=V1 type=vsrcdc p=in n=0 vdc=10
eelement name=R1 type=r p=in n=out r=1k
eelement name=R2 type=r p=out n=0 r=2k
outvar: vout=nodev_of_out' 'filename out.dat
variables: vout'
}
deck() { # circuit block, output block
    printf 'title: divider\nbegin_circuit\nrefnode 0\n%s\nend_circuit\nbegin_solve\nsolve_type dc\nbegin_output\n%s\n' \
        "$1" "$2" >.tnlaux/cct.in
    printf 'end_output\nend_solve\nend_cf\n' >>.tnlaux/cct.in
}
run() { # sets status, text
    "$tarnel" >../text 2>../errors </dev/null
    status=$?
    text=$(cat ../text)
    expect "$1: nothing on standard error" '' "$(cat ../errors)"
}
stops() { # what, whole text
    run "$1"
    expect "$1: status" 1 "$status"
    expect "$1: text" "$2" "$text"
}
rows=' 6.666667e+00 '
size='mat::set_mat_2: system matrix size is 3 x 3'
done='TARNEL: Program completed.'
sound() { # what
    run "$1"
    expect "$1: status" 0 "$status"
    expect "$1: text" "$size
$done" "$text"
    expect "$1: rows" "$rows" "$(cat out.dat)"
}

fresh
sound 'the folder itself'

# ---- long decks ---------------------------------------------------------------------------------------------------------

long() { # lines of the whole deck
    fresh
    have=$(wc -l <.tnlaux/cct.in)
    yes '# a line more' | head -n $(($1 - have)) >>.tnlaux/cct.in
    expect 'lines of the deck' "$1" "$(wc -l <.tnlaux/cct.in)"
}
too_long='filr_chr: file end not reached. Halting..'
long 5000
sound 'a deck of 5000 lines'
long 5001
stops 'one line more' "$too_long"
echo 'M_DECK_LINES 5001' >>tmpdim.in
sound 'with M_DECK_LINES'
echo 'M_DECK_LINES 5000' >>tmpdim.in
stops 'of less' "$too_long"
long 4000
echo 'M_DECK_LINES 3999' >>tmpdim.in
stops 'a limit below the usual one' "$too_long"
long 5001
echo 'M_DECK_LINES many' >>tmpdim.in
stops 'a limit that is no number, behind the fault of the deck' "$too_long"
fresh
echo 'M_DECK_LINES many' >>tmpdim.in
stops 'and by itself' 'check integer string: <many>
  (brackets are not part of the string)
  Halting...'

# ---- files that are not there, cannot be read, or are folders ----------------------------------------------------------
who_reads() {
    case $1 in
        *.aux) echo "$(basename "$1" .aux)_class" ;;
        *.lst) echo make_chrarray_5 ;;
        tmpdim.in) echo tmpdim_class ;;
        *) echo file_chr ;;
    esac
}
for file in .tnlaux/cct.in tmpdim.in .tnlaux/ebes.aux .tnlaux/gbes.aux .tnlaux/ebac.aux .tnlaux/gbac.aux .tnlaux/dbes.aux \
    .tnlaux/xbes.aux .tnlaux/xbac.aux .tnlaux/eels.aux .tnlaux/gels.aux .tnlaux/dels.aux .tnlaux/xels.aux \
    .tnlaux/gmes.aux .tnlaux/ece_all.lst .tnlaux/gce_all.lst .tnlaux/xce_all.lst .tnlaux/dbe_all.lst \
    .tnlaux/ebe_all.lst .tnlaux/gbe_all.lst .tnlaux/xbe_all.lst .tnlaux/sse_all.lst .tnlaux/ssg_all.lst \
    .tnlaux/ssx_all.lst; do
    missing="$(who_reads "$file"): file $file does not exist. Halting..."
    fresh
    rm "$file"
    stops "no $file" "$missing"
    mkdir "$file"
    stops "a folder in place of $file" "$missing"
    if [ "$(id -u)" -ne 0 ]; then
        rmdir "$file"
        echo >"$file"
        chmod 0 "$file"
        stops "$file without permission" "$missing"
    fi
done
fresh
rm -r .tnlaux
stops 'no .tnlaux' 'file_chr: file .tnlaux/cct.in does not exist. Halting...'
: >.tnlaux
stops 'a file in place of .tnlaux' 'file_chr: file .tnlaux/cct.in does not exist. Halting...'

# ---- list files --------------------------------------------------------------------------------------------------------
for family in ece ebe sse; do
    list=.tnlaux/${family}_all.lst
    fresh
    grep -v '\.r$' $list >x && mv x $list
    stops "$list without r" 'make_chrarray_5: r not found in input file.
  word_r is: r
  Halting...'
    fresh
    echo .r >>$list
    stops "$list with r twice" "make_chrarray_5: in file $list,
  r is appearing more than once!"
    fresh
    echo '# no dot' >>$list
    run "$list with a line without a dot"
    expect "$list with a line without a dot: status" 1 "$status"
    expect "$list with a line without a dot: last line" '  Halting...' "$(echo "$text" | tail -n 1)"
    fresh
    : >$list
    run "an empty $list"
    expect "an empty $list: status" 1 "$status"
    fresh
    printf '.not_in_any_library\nx.y.z of no account\n\n' >>$list
    sound "$list with more than is needed"
done

# ---- decks -------------------------------------------------------------------------------------------------------------
fresh
: >.tnlaux/cct.in
stops 'an empty deck' 'circuit_file: end_cf not found. Halting...'
printf '\n\n# nothing\n   \n' >.tnlaux/cct.in
stops 'a deck of comments' 'circuit_file: end_cf not found. Halting...'
echo '+ title: x' >.tnlaux/cct.in
stops 'a deck that begins with a continuation' 'count_file_1: cannot have + in the first line! Halting...'
fresh
sed '/^title/d' .tnlaux/cct.in >x && mv x .tnlaux/cct.in
stops 'a deck without title' 'circuit_file: title: not found. Halting...'
for word in begin_circuit end_circuit; do
    fresh
    sed "/^$word/d" .tnlaux/cct.in >x && mv x .tnlaux/cct.in
    stops "a deck without $word" 'circuit_file: begin_circuit not found. Halting...'
done
fresh
sed '/^end_solve/d' .tnlaux/cct.in >x && mv x .tnlaux/cct.in
stops 'a deck without end_solve' 'circuit_file: end_solve not found. Halting...'

# The same rows whatever ends the lines, and without an end of the last one.
fresh
sed 's/$/\r/' .tnlaux/cct.in >x && mv x .tnlaux/cct.in
for file in .tnlaux/*.aux .tnlaux/*.lst tmpdim.in; do sed 's/$/\r/' "$file" >x && mv x "$file"; done
sound 'carriage returns in every file'
fresh
printf '%s' "$(cat .tnlaux/cct.in)" >x && mv x .tnlaux/cct.in
sound 'a deck without a last newline'

# Bytes of the simulator itself in place of each text file.
for file in .tnlaux/cct.in .tnlaux/ebes.aux .tnlaux/ebac.aux .tnlaux/eels.aux .tnlaux/gbes.aux .tnlaux/ebe_all.lst \
    tmpdim.in; do
    fresh
    head -c 300000 "$tarnel" >"$file"
    run "bytes in $file"
    expect "bytes in $file: status" 1 "$status"
    expect "bytes in $file: a text" yes "$([ -n "$text" ] && echo yes || echo no)"
    head -c 100000 /dev/zero >"$file"
    run "zeros in $file"
    expect "zeros in $file: status" 1 "$status"
done

# A line of a megabyte, as a word, as many words, and as a comment; numbers of 400 digits.
long=$(head -c 1000000 /dev/zero | tr '\0' a)
many=$(yes 'a b' | head -n 250000 | tr '\n' ' ')
for line in "$long" "$many" "eelement name=R9 type=r p=out n=$long" "eelement name=R9 type=r $many"; do
    fresh
    { head -n 3 .tnlaux/cct.in && printf '%s\n' "$line" && tail -n +4 .tnlaux/cct.in; } >x && mv x .tnlaux/cct.in
    run 'a line of a megabyte'
    expect 'a line of a megabyte: status' 1 "$status"
done
fresh
printf '# %s\n' "$long" | cat - .tnlaux/cct.in >x && mv x .tnlaux/cct.in
sound 'a comment of a megabyte'
for file in .tnlaux/ebes.aux .tnlaux/ebac.aux .tnlaux/eels.aux .tnlaux/ebe_all.lst tmpdim.in; do
    fresh
    printf '%s\n' "$many" >>"$file"
    run "a line of a megabyte in $file"
    expect "a line of a megabyte in $file: status" 1 "$status"
done
digits=$(head -c 400 /dev/zero | tr '\0' 3)
number() { # what, value of R2, wanted status
    fresh
    sed "s/r=2k/r=$2/" .tnlaux/cct.in >x && mv x .tnlaux/cct.in
    run "$1"
    expect "$1: status" "$3" "$status"
}
number '400 digits are infinity' "$digits" 1
expect '400 digits are infinity: text' "check double string: <$digits>
  (brackets are not part of the string)
  value = inf
  Halting..." "$text"
number '400 digits behind the point' "2000.$digits" 0
expect '400 digits behind the point: row' ' 6.667037e+00 ' "$(cat out.dat)"
number 'an exponent of 400 digits' "1e$digits" 1
number 'a resistance of 1e-400' 1e-400 1
expect 'a resistance of 1e-400: text' 'r.ebe: r too small!
r.ebe: r=0
r.ebe: k_scale=1' "$text"
number 'a resistance that is no number' nan 1
number 'a word for a number' two_k 1
number 'a number with a unit' 2kOhm 1
number 'an unknown scale' 2F 1

# ---- output files --------------------------------------------------------------------------------------------------------
fresh
sed 's/filename out.dat/filename no_such_folder\/out.dat/' .tnlaux/cct.in >x && mv x .tnlaux/cct.in
stops 'a row file in a folder that is not there' "row_file: output file no_such_folder/out.dat could not be opened.
  No such file or directory
  Halting..."
fresh
mkdir out.dat
stops 'a folder in place of a row file' 'row_file: output file out.dat could not be opened.
  Is a directory
  Halting...'
if [ -c /dev/full ]; then
    fresh
    sed 's/filename out.dat/filename \/dev\/full/' .tnlaux/cct.in >x && mv x .tnlaux/cct.in
    stops 'a full disk' "$size
row_file: output file /dev/full could not be written.
  No space left on device
  Halting..."
    # Enough rows to fill the buffer on the way: the run stops there, and the other file has the rows up to there.
    fresh
    deck 'eelement name=V1 type=vsrcdc p=in n=0 vdc=10
eelement name=R1 type=r p=in n=out r=1k
eelement name=R2 type=r p=out n=0 r=2k
outvar: vout=nodev_of_out' 'filename /dev/full
variables: vout
end_output
begin_output
filename out.dat
variables: vout
end_output
vary_parm vdc_of_V1 from 1 to 2 type linear n_points 20000
begin_output
filename parms.dat
variables: parms'
    run 'a full disk in a long sweep'
    expect 'a full disk in a long sweep: status' 1 "$status"
    expect 'a full disk in a long sweep: text' 'row_file: output file /dev/full could not be written.' \
        "$(echo "$text" | tail -n 3 | head -n 1)"
    expect 'a full disk in a long sweep: rows of the other file' yes \
        "$([ "$(wc -l <out.dat)" -gt 3000 ] && [ "$(wc -l <out.dat)" -lt 6000 ] && echo yes || wc -l <out.dat)"
    expect 'a full disk in a long sweep: lines of it that are no rows' 0 "$(grep -c -v -E '^ [0-9.]+e[-+][0-9]+ $' out.dat)"
fi

# A stop in the third point of a sweep: two rows are there.
fresh
deck 'eelement name=V1 type=vsrcdc p=in n=0 vdc=10
eelement name=R1 type=r p=in n=out r=1k
eelement name=R2 type=r p=out n=0 r=2k
outvar: vout=nodev_of_out' 'filename out.dat
variables: vout
end_output
vary_parm r_of_R2 type table 1k 3k 0
begin_output
filename both.dat
variables: r_of_R2 vout'
stops 'a parameter that a model refuses in a sweep' "$size
r.ebe: r too small!
r.ebe: r=0
r.ebe: k_scale=1"
expect 'rows before the stop' ' 5.000000e+00 
 7.500000e+00 ' "$(cat out.dat)"
expect 'rows before the stop, in every file' 2 "$(wc -l <both.dat)"

# ---- memory --------------------------------------------------------------------------------------------------------------
# 20000 sections of a ladder with less and less memory: rows, or a text.
fresh
{
    printf 'title: ladder\nbegin_circuit\nrefnode 0\neelement name=V1 type=vsrcdc p=n0 n=0 vdc=10\n'
    awk 'BEGIN { for (k = 0; k < 20000; ++k) {
        print "eelement name=R" k " type=r p=n" k " n=n" k + 1 " r=1k"
        print "eelement name=S" k " type=r p=n" k + 1 " n=0 r=1k" } }'
    printf 'outvar: vout=nodev_of_n1\nend_circuit\nbegin_solve\nsolve_type dc\nbegin_output\nfilename out.dat\n'
    printf 'variables: vout\nend_output\nend_solve\nend_cf\n'
} >.tnlaux/cct.in
sizes 1000000 M_DECK_LINES >tmpdim.in
run 'a large circuit with all memory'
expect 'a large circuit with all memory: status' 0 "$status"
told=0
if takes_memory_limit "$tarnel"; then limits='20000 40000 60000 80000 120000'; else limits=; fi # kB
for memory in $limits; do
    (ulimit -v $memory && exec "$tarnel" >../text 2>../errors </dev/null)
    status=$?
    text=$(tail -n 2 ../text)
    case "$status $text" in
        "1 main: there is not enough memory for this.
  Halting...") told=$((told + 1)) ;;
        "0 "*"$done") ;;
        *) expect "a large circuit in $memory kB" 'rows or a text' "status $status, $text" ;;
    esac
    expect "a large circuit in $memory kB: nothing on standard error" '' "$(cat ../errors)"
done
if [ -n "$limits" ] && [ $told -lt 2 ]; then expect 'too little memory is told' 'twice or more' "$told times"; fi
# Harmonics that no memory holds are refused before any is reserved.
fresh
deck 'eelement name=V1 type=vsrcdc p=in n=0 vdc=10
eelement name=R1 type=r p=in n=0 r=1k
outvar: v=nodev_of_in' 'filename out.dat fourier=yes
control: n_fourier=2147483646
variables: v v v v v v v v v v v v v v v v v v v v v v v v v v v v v v v v v v v v v v v v v v v v v v v v v v v v v v v'
sed 's/solve_type dc/solve_type trns\nmethod: back_euler=yes t_end=1 delt_const=0.1/' .tnlaux/cct.in >x && mv x .tnlaux/cct.in
stops 'two thousand million harmonics' 'solve_class: too many harmonics and variables
   in a Fourier file. Halting...'

# ---- sizes ---------------------------------------------------------------------------------------------------------------
fresh
sed 's/M_ECT_ND_TMP 1000/M_ECT_ND_TMP 2/' tmpdim.in >x && mv x tmpdim.in
run 'too many nodes'
expect 'too many nodes: status' 1 "$status"
fresh
sed 's/MNZ_EBCE 1000/MNZ_EBCE 6/' tmpdim.in >x && mv x tmpdim.in
sound 'as many entries as there is room'
fresh
sed 's/MNZ_EBCE 1000/MNZ_EBCE 5/' tmpdim.in >x && mv x tmpdim.in
stops 'too many entries' 'mat_class::ebce_mat_1_allocate:
  nnz_ebce is too large. Halting...'
fresh
sed '/F_MNZ_W/d' tmpdim.in >x && mv x tmpdim.in
run 'a size that is missing'
expect 'a size that is missing: status' 1 "$status"
for value in x 1.5 99999999999999999999 ''; do
    fresh
    sed "s/M_MATTTLOP2 1000/M_MATTTLOP2 $value/" tmpdim.in >x && mv x tmpdim.in
    run "M_MATTTLOP2 $value"
    expect "M_MATTTLOP2 $value: status" 1 "$status"
done

# ---- solution files ------------------------------------------------------------------------------------------------------
for start in nosuch.dat . ''; do
    fresh
    sed "s/^solve_type dc/solve_type dc\ninitial_sol file filename $start/" .tnlaux/cct.in >x && mv x .tnlaux/cct.in
    run "a solution from <$start>"
    expect "a solution from <$start>: status" 1 "$status"
done
fresh
sed 's/^solve_type dc/solve_type dc\ninitial_sol file filename start.dat/' .tnlaux/cct.in >x && mv x .tnlaux/cct.in
head -c 300000 "$tarnel" >start.dat
run 'bytes in a solution'
expect 'bytes in a solution: status' 1 "$status"

no_faults
