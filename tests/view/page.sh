#!/bin/sh
# The page of tnl view in a headless browser. Where browser, node or the packages of npm are missing it is skipped (77),
# with CI=true it fails.
# Arguments: the program, a folder to work in, the folder of the source tree.
set -eu
tnl=$1
work=$2
source=$3
packages=$source/build/npm # as the script ./tnl installs them
chromium=${CHROMIUM:-/usr/bin/chromium}
missing() {
    echo "$1 is missing"
    if [ "${CI:-}" = true ]; then exit 1; fi
    exit 77
}
for needed in "$chromium" "$packages/node_modules/uplot" "$packages/node_modules/playwright-core"; do
    if [ ! -e "$needed" ]; then missing "$needed"; fi
done
command -v node >/dev/null 2>&1 || missing node

rm -rf "$work"
mkdir -p "$work/bin" "$work/share/view" # a place of its own, with the page as it stands in the source
cp "$tnl" "$(dirname -- "$tnl")/tnl-view" "$work/bin/"
cp "$source"/src/tnl/view/*.html "$source"/src/tnl/view/*.js "$source"/src/tnl/view/*.css "$source"/src/tnl/view/*.svg \
    "$packages/node_modules/uplot/dist/uPlot.iife.min.js" "$packages/node_modules/uplot/dist/uPlot.min.css" \
    "$work/share/view/"
cd "$work"
node "$source/tests/view/rows.mjs" "$source"
exec node "$source/tests/view/page.mjs" "$work/bin/tnl" "$packages/package.json" "$chromium"
