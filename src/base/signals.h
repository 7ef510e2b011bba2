// signals.h -- between two points of a run: rows go to the disk twice a second, and a signal that asks the run to end
// does so, with every row on the disk.
#pragma once

// From here on SIGINT and SIGTERM are only noted, and a timer notes every half second that rows are due. A run that
// does not heed them within four seconds is ended by the signal all the same. Files beyond the user's limit of size are
// files that cannot be written.
void note_signals();
// Flushes console and row files if that is due; ends the process by the signal that was noted. Costs one load
// otherwise.
void heed_signals();
