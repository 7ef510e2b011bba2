# expect.sh -- what the tests from outside share; read by each of them before it leaves its first folder.
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
# Whether a limit of memory can be tried: the address sanitizer reserves more than any.
takes_memory_limit() { # program
    ! grep -q __asan_init "$1"
}

# The last command of a test.
no_faults() {
    if [ "$faults" -ne 0 ]; then echo "$faults faults"; fi
    [ "$faults" -eq 0 ]
}
