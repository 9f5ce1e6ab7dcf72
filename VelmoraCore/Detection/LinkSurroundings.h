#pragma once

#include <cstddef>
#include <string_view>

namespace velmora {

// What stands before a link and has its counterpart behind it: that counterpart is the text's.
struct LinkSurroundings {
    // "'", ",", ";" or "|": ends the link where it stands again; zero for none.
    char separator = '\0';
    // A run of one mark, as in "**link**"; its like behind the link belongs to the text.
    char mark = '\0';
    std::size_t markLength = 0;
    // A double quote, and whether it is itself escaped, as in text within text.
    bool isQuoted = false;
    bool isEscapedQuoted = false;

    bool areEmpty() const { return separator == '\0' && mark == '\0' && !isQuoted; }

    // Whether the mark closes here. One that stands in many queries does where no word goes on.
    bool closesAt(std::string_view text, std::size_t at, bool isInValue) const;
};

// How much of the text on each side of a link goes with it when it is judged in a text of its own. It says where the
// link ends, and whether it is put together with what follows.
constexpr std::size_t surroundingsSize = 64;

// Reads backwards from the link that begins at `begin`, over marks and over a key as in "url=link", to what
// separates it from the text before; a fixed number of bytes at most, and nothing before `floor`.
LinkSurroundings readSurroundings(std::string_view text, std::size_t begin, std::size_t floor);

// The same; most links stand behind a blank, which says nothing.
inline LinkSurroundings surroundingsBefore(std::string_view text, std::size_t begin, std::size_t floor)
{
    const bool isAlone = begin == floor || static_cast<unsigned char>(text[begin - 1]) <= ' ';
    return isAlone ? LinkSurroundings() : readSurroundings(text, begin, floor);
}

} // namespace velmora
