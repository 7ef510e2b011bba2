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

no_faults
