#!/bin/sh
# The script ./tnl in a tree whose build fails, with a stand-in for the program and for ninja. Arguments: a folder to
# work in, the folder of the source tree.
arguments='work source'
. "$(dirname -- "$0")/expect.sh"
mkdir -p tree/build/bin tree/src/tnl/view path
work=$(pwd -P)
for file in /usr/include/CLI/CLI.hpp /usr/include/nlohmann/json.hpp /usr/include/httplib.h /usr/include/gtest/gtest.h; do
    if [ ! -e "$file" ]; then
        echo "$file is missing: the script would install it"
        exit 77
    fi
done
cp "$source/tnl" tree/tnl
cp "$source"/src/tnl/view/package*.json tree/src/tnl/view/
: >tree/build/build.ninja
echo "CMAKE_HOME_DIRECTORY:INTERNAL=$work/tree" >tree/build/CMakeCache.txt
program() { # name, what it does
    printf '#!/bin/sh\n%s\n' "$2" >"$1"
    chmod +x "$1"
}
program tree/build/bin/tnl 'echo "the program, $*"'
program tree/build/bin/tarnel 'exit 0'
program path/ninja 'echo "../models/e/mine/x.ebe:36:17: error: no such name"; exit 1'
program path/npm "echo asked >$work/npm.txt; exit 1"
PATH=$work/path:$PATH
export PATH

expect 'rows are looked at' 0 "$(status_of tree/tnl plot a.run)"
expect 'by the program of before' 'the program, plot a.run' "$(cat out.txt)"
expect 'the fault is told with a whole path' "$work/tree/models/e/mine/x.ebe:36:17: error: no such name" "$(head -n 1 err.txt)"
expect 'a run is none' 1 "$(status_of tree/tnl run a.in)"
expect 'of programs that are not those of the source' '' "$(cat out.txt)"
rm tree/build/bin/tnl
expect 'without a program' 1 "$(status_of tree/tnl plot a.run)"
program tree/build/bin/tnl 'echo "the program, $*"'
program path/ninja 'exit 0'
expect 'help of view' 0 "$(status_of tree/tnl view --help)"
expect 'is there' 'the program, view --help' "$(cat out.txt)"
expect 'and fetches nothing' no "$([ -e npm.txt ] && echo yes || echo no)"
expect 'a view does' 1 "$(status_of tree/tnl view a.run)"
expect 'from npm' yes "$([ -e npm.txt ] && echo yes || echo no)"

no_faults
