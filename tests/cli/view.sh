#!/bin/sh
# tnl view from outside: the address, who is let in, and how it ends. Arguments: the program, a folder to work in, the
# folder of the source tree.
arguments='tnl work source'
. "$(dirname -- "$0")/expect.sh"

# The plotting library comes from npm; the server does not care what stands in its files.
bin=$(dirname -- "$tnl")
mkdir -p own/bin own/share/view
cp "$tnl" "$bin/tnl-view" own/bin/ # a place of its own, so that the built one is left alone
cp "$source"/src/tnl/view/*.html "$source"/src/tnl/view/*.js "$source"/src/tnl/view/*.css "$source"/src/tnl/view/*.svg \
    own/share/view/
view=$work/own/bin/tnl
printf '1 2\n3 4\n' >rows.dat

expect 'a missing library is told' 5 "$(status_of "$view" view rows.dat)"
expect 'by name' 1 "$(grep -c 'uPlot.iife.min.js is missing' err.txt)"
: >own/share/view/uPlot.iife.min.js
: >own/share/view/uPlot.min.css

expect 'a run is needed' 2 "$(status_of "$view" view)"
expect 'a run that is not there' 5 "$(status_of "$view" view nosuch)"
expect 'is told' 'tnl: cannot read nosuch: no such run, deck or row file' "$(cat err.txt)"
expect 'a port is a number below 65536' 2 "$(status_of "$view" view rows.dat --port 70000)"
expect 'a time is not negative' 2 "$(status_of "$view" view rows.dat --timeout -1)"
expect 'it ends by itself when nobody asks' 0 "$(status_of "$view" view rows.dat --timeout 0.3)"
expect 'one line is printed' 1 "$(wc -l <out.txt)"
expect 'which is the address' 1 "$(grep -cE '^http://127\.0\.0\.1:[0-9]+/[0-9a-f]{32}/$' out.txt)"
expect 'and nothing else' '' "$(cat err.txt)"
expect 'a full disk in place of standard output' 5 "$("$view" view rows.dat >/dev/full 2>err.txt; echo $?)"

started() { # arguments of tnl view; sets server and address
    : >address.txt
    "$view" view "$@" >address.txt 2>err.txt </dev/null &
    server=$!
    for _ in 1 2 3 4 5 6 7 8 9 10 11 12 13 14 15 16 17 18 19 20 21 22 23 24 25 26 27 28 29 30 31 32 33 34 35 36 37 38 39 40; do
        [ -s address.txt ] && break
        sleep 0.25
    done
    address=$(cat address.txt)
    port=${address#http://127.0.0.1:}
    port=${port%%/*}
}
ended() { # signal; sets status
    kill -"$1" "$server"
    wait "$server"
    status=$?
}

# A shell without job control starts background commands with interrupts ignored; the server takes them all the same.
started rows.dat
if command -v curl >/dev/null 2>&1; then
    code() { curl -s -o /dev/null -w '%{http_code}' --path-as-is --max-time 20 "$@"; }
    expect 'the page' 200 "$(code "$address")"
    expect 'without the token' 403 "$(code "http://127.0.0.1:$port/")"
    expect 'with another host name' 403 "$(code -H 'Host: evil.example' "$address")"
    expect 'the list' 200 "$(code "${address}api/runs")"
    expect 'no other file' 404 "$(code "${address}../../../rows.dat")"
    expect 'nor a folder above' 403 "$(code "http://127.0.0.1:$port/../rows.dat")"
    expect 'a port that is taken' 5 "$(status_of "$view" view rows.dat --port "$port")"
    expect 'is told' 1 "$(grep -c "^tnl: cannot listen on port $port: " err.txt)"
fi
# It listens on the loopback address only: 0100007F in the kernel's table of sockets, never 00000000.
expect 'the address it listens on' '0100007F' \
    "$(awk -v port="$(printf '%04X' "$port")" '$4 == "0A" { split($2, a, ":"); if (a[2] == port) print a[1] }' /proc/net/tcp)"
ended INT
expect 'an interrupt' 130 "$status"
started rows.dat
ended TERM
expect 'a request to terminate' 143 "$status"

# tnl itself carries none of the server's libraries.
expect 'libraries of tnl' 0 "$(ldd "$tnl" | grep -cE 'httplib|ssl|crypto|brotli')"

no_faults
