#pragma once

#include "InputFile.h"

#include <cstddef>
#include <span>
#include <string>
#include <string_view>
#include <vector>

// A part of a stream that can be worked on by itself.
struct Piece {
    enum class Kind {
        whole,         // Words or lines.
        tooLong,       // The beginning of a word or line that is too long to hold.
        restOfTooLong, // More of it. The last such piece ends as it does.
    };

    std::string_view text() const { return {buffer.data(), size}; }

    Kind kind = Kind::whole;
    std::size_t firstLine = 1; // Counted from 1, from the beginning of the stream, if lines are counted.
    std::vector<char> buffer;
    std::size_t size = 0; // Of the text; the buffer may be larger.
};

// Cuts a stream into pieces that end as words or lines do. What has arrived is not held back for the sake of
// larger pieces, but for the end of the last line, or of the last word of a long one.
class PieceReader {
public:
    enum class Cut {
        behindWords, // Behind a line feed, or in a long line behind an ASCII blank or control.
        behindLines, // Behind a line feed.
    };

    // A word or line of more than `longest` bytes is not held in memory but given in several pieces.
    PieceReader(InputFile &file, Cut cut, std::size_t longest, bool countsLines)
        : file_(file)
        , cut_(cut)
        , longest_(longest)
        , countsLines_(countsLines)
    {
    }

    // False at the end of the stream.
    bool next(Piece &piece);

private:
    bool isDelimiter(char c) const;
    std::size_t behindFirstDelimiter(std::string_view text) const;
    std::size_t behindLastDelimiter(std::string_view text, std::size_t from) const;
    std::size_t fill(Piece &piece, std::size_t length);
    void nextOfTooLong(Piece &piece);
    void nextWhole(Piece &piece);
    void take(Piece &piece, std::size_t end, std::size_t length);

    InputFile &file_;
    Cut cut_;
    std::size_t longest_;
    bool countsLines_;
    std::string carried_; // Was read, but belongs to the next piece.
    std::size_t line_ = 1;
    bool inTooLong_ = false;
};
