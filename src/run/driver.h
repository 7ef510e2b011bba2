// driver.h -- a whole run in the current folder.
#pragma once

// Reads .tnlaux/, tmpdim.in and the deck, elaborates, and runs the deck's solve blocks in order. Returns at the end of the
// deck; every fault halts.
void run_tarnel();
