#!/bin/sh
# The trials find a command that takes more memory than it may, with a stand-in for tnl. Arguments: a folder to work in,
# the folder of the source tree.
arguments='work source'
. "$(dirname -- "$0")/expect.sh"

stand_in() { # MB that it takes; what it cannot have it does without
    cat >tnl <<PYTHON
#!/usr/bin/env python3
import sys
try:
    taken = b"x" * ($1 << 20)
except MemoryError:
    print("not enough memory")
    sys.exit(5)
PYTHON
    chmod +x tnl
}
trials() { status_of "$source/tests/trials/trials.py" ./tnl --decks 1 --rules 0 --jobs 1 --patience 5 --memory 100; }

stand_in 10
expect 'memory within the limit' 0 "$(trials)"
stand_in 150
expect 'more memory than the limit' 1 "$(trials)"
expect 'is told' yes "$(grep -q '^MEMORY: 0 ' out.txt && echo yes)"
stand_in 1000
expect 'memory that the system does not give' 0 "$(trials)"
expect 'is told to be looked at' 1 "$(grep -c '^refused: [12] decks' out.txt)"

no_faults
