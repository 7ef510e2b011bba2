// memory.h -- how much memory a run may take.
#pragma once

// Bytes that the machine has, or fewer where the process may not have them all.
double memory_limit();
// Whether so many bytes can be had at all. Asked before a table is reserved whose size a word of the deck gives.
bool fits_in_memory(double bytes);
// Makes an allocation beyond that limit fail, so that it can be told; the system would end the program without a word.
void hold_to_memory_limit();
