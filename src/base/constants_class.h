// constants_class.h -- the two mode words of the library constructors.
#pragma once

// The second word decides what a library constructor does when it may write sources: 1 and 2 make it write the model
// functions and the dispatch routine (by library number, or through the list of all names), any other value makes it
// fill its tables only. The simulator always has 3, which also asks for the checks against the list files.
struct constants_class {
    int first = 1;
    int second = 3;
};
