#pragma once

#include "CleanedPiece.h"
#include "PieceReader.h"

#include <VelmoraCore/LinkCleaner.h>

#include <cstddef>
#include <string>

// Cleans the pieces of a text. Every cut between them goes behind a blank, which no link contains, so the
// result is that of the whole text; a word that is too long is passed on as it is. Any thread may call this.
class TextCleaning {
public:
    // With `report` the messages say what was removed; `name` stands before each.
    TextCleaning(const velmora::LinkCleaner &cleaner, bool report, std::string name)
        : cleaner_(cleaner)
        , report_(report)
        , name_(std::move(name))
    {
    }

    void clean(const Piece &piece, CleanedPiece &result) const;

    static constexpr std::size_t longestWord = std::size_t{64} * 1024 * 1024;

private:
    const velmora::LinkCleaner &cleaner_;
    bool report_;
    std::string name_;
};
