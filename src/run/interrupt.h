// interrupt.h -- a signal that asks the run to end does so between two points, with every row on the disk.
#pragma once

// From here on SIGINT and SIGTERM are only noted.
void note_interrupts();
// If one was noted: flushes console and row files and ends the process by that signal. Costs one load otherwise.
void end_if_interrupted();
