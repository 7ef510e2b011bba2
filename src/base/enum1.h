// enum1.h -- the two- and three-valued words of the program.
#pragma once

// Every flag. Held in 32 bits, so that a flag can be handed to a model by pointer as an int.
enum truefalse : int { int_F = 0, int_T = 1 };

// Which word positions of a statement a search looks at.
enum evenodd : int {
    odd_words = 0,   // 1, 3, 5, ...
    even_words = 1,  // 0, 2, 4, ...
    all_words = 2,
};

// A generated source is written afresh or continued.
enum newold : int { file_new = 0, file_old = 1 };
