#pragma once

#include <string>

// What became of a piece of a stream.
struct CleanedPiece {
    std::string output;
    std::string messages; // Whole lines for standard error.
    bool changed = true;  // Whether the output differs from the piece.
    bool failed = false;  // Whether the piece was malformed.

    // For the next piece, in the memory of this one.
    void clear()
    {
        output.clear();
        messages.clear();
        changed = true;
        failed = false;
    }
};
