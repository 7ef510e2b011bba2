#!/bin/sh
# Faults in element files: the generator and the compiler name the file, the compiler the line too. Arguments: the
# generator, a folder to work in, the folder of the source tree, the compiler.
arguments='generate work source compiler'
. "$(dirname -- "$0")/expect.sh"
mkdir -p models/e/mine
element() { # sed commands: models/e/mine/mine.ebe, a resistor with a change
    sed -e 's/^ebe name=r /ebe name=mine /' "$@" "$source/models/e/passive/r.ebe" >models/e/mine/mine.ebe
}
made() { status_of "$generate" generated share models/e/mine/mine.ebe; }
compiled() {
    status_of "$compiler" -std=c++20 -fsyntax-only -I"$source/src" -I"$source/src/base" -I"$source/src/library/basic" \
        -I"$source/src/models" generated/.tnlaux/subebe.cpp
}
line_of() { grep -n -e "$1" models/e/mine/mine.ebe | head -n 1 | cut -d : -f 1; }

element
expect 'a sound element' 0 "$(made)"
expect 'compiles' 0 "$(compiled)"

element -e 's/g = rparm\[nr_g\];/g = rparm[nr_gg];/' -e 's/^source:/source:\n\n   \/\/ a remark, which is not copied\n/'
expect 'a misspelt name' 0 "$(made)"
expect 'does not compile' 1 "$(compiled)"
expect 'and is told with its place' "models/e/mine/mine.ebe:$(line_of nr_gg)" "$(grep error: err.txt | head -n 1 | cut -d : -f 1,2)"

element -e 's/^   double dt;/   double dt;\n   doubel more;/'
expect 'a misspelt type' 0 "$(made)"
expect 'does not compile either' 1 "$(compiled)"
expect 'and has its place' "models/e/mine/mine.ebe:$(line_of doubel)" "$(grep error: err.txt | head -n 1 | cut -d : -f 1,2)"

element -e 's/^   double dt;/   double dt, tc1;/'
expect 'a name of the declaration as a variable' 0 "$(made)"
expect 'is refused' 1 "$(compiled)"
expect 'at the names of the file' 'names of models/e/mine/mine.ebe' "$(grep error: err.txt | head -n 1 | cut -d : -f 1)"

element -e 's/^no_functions 2/no_functions two/'
expect 'a fault of the declaration' 1 "$(made)"
expect 'names the file' '  in models/e/mine/mine.ebe' "$(tail -n 1 out.txt)"
element -e 's/^endC//'
expect 'a source without end' 1 "$(made)"
expect 'names the file too' '  in models/e/mine/mine.ebe' "$(tail -n 1 out.txt)"


# A composite that computes parameters: its file has a source just where its flags ask for one.
composite() { # sed commands: models/e/mine/mine.ece, a gapped inductor with a change
    sed -e 's/^ece name=l_gap /ece name=mine /' "$@" "$source/models/e/magnetics/l_gap.ece" >models/e/mine/mine.ece
}
composite_made() {
    status_of "$generate" generated share models/e/mine/mine.ece "$source/models/e/passive/l.ebe" "$source/models/e/passive/l.sse"
}
function_compiled() {
    status_of "$compiler" -std=c++20 -fsyntax-only -I"$source/src" -I"$source/src/base" generated/.tnlaux/regece.cpp
}
place_of_error() { grep error: err.txt | head -n 1 | cut -d : -f 1,2; }
line_of_composite() { grep -n -e "$1" models/e/mine/mine.ece | head -n 1 | cut -d : -f 1; }

composite
expect 'a composite with a function' 0 "$(composite_made)"
expect 'compiles' 0 "$(function_compiled)"
expect 'is registered with its counts' 1 "$(grep -c '{"mine", mine_acpe, 0, 0, 6, 3},' generated/.tnlaux/regece.cpp)"
expect 'its installed text says so' 'C: compiled' "$(sed -n '/^C:/,/^begin_ac/p' share/eels.aux | sed '$d')"

composite -e 's/^   area = rparm\[nr_area\];/   \/\/ a remark\n\n   area = rparm[nr_aera];/'
expect 'a misspelt name in it' 0 "$(composite_made)"
expect 'does not compile' 1 "$(function_compiled)"
expect 'and has its place' "models/e/mine/mine.ece:$(line_of_composite nr_aera)" "$(place_of_error)"
composite -e 's/^variables:/variables:\n   int gap;/'
expect 'a parameter as a variable' 0 "$(composite_made)"
expect 'is refused' 1 "$(function_compiled)"
expect 'at the names of the file' 'names of models/e/mine/mine.ece' "$(place_of_error | cut -d : -f 1)"

fault() { # what, text, sed commands
    what=$1 text=$2
    shift 2
    composite "$@"
    expect "$what" 1 "$(composite_made)"
    expect "$what: its text" "$text" "$(head -n 1 out.txt)"
    expect "$what: its file" '  in models/e/mine/mine.ece' "$(tail -n 1 out.txt)"
}
fault 'no source' 'tarnel_generate: mine has no source for its parameters between C: and endC.' -e '/^variables:/,/l_o\] =/d'
fault 'remarks are none' 'tarnel_generate: mine has no source for its parameters between C: and endC.' \
    -e '/^variables:/,/l_o\] =/d' -e 's/^C:/C:\n\n  \/\/ later/'
fault 'said to be compiled' 'tarnel_generate: mine has no source for its parameters between C: and endC.' \
    -e '/^variables:/,/^endC/d' -e 's/^C:/C: compiled/'
fault 'a source that nothing calls' 'tarnel_generate: nothing calls the source of mine:' -e 's/ compute_rparms=yes//'
fault 'no variables' 'eels_class: variables: not found. Halting...' -e '/^variables:/d'
fault 'no source line' 'eels_class: (source:) not found. Halting...' -e '/^source:/d'
fault 'sources the other way round' 'eels_class: (source:) not found. Halting...' \
    -e 's/^variables:/was/' -e 's/^source:/variables:/' -e 's/^was/source:/'
composite -e 's/ compute_rparms=yes/ compute_acp=yes/'
expect 'compute_acp asks for one as well' 0 "$(composite_made)"

no_faults
