#pragma once

#include <cstddef>
#include <string_view>

// Searches over bytes, sixteen at a time where the processor can. Each looks from `begin` on and gives the
// text's size if it finds nothing.
namespace velmora {

// The first "?" that something follows in the same word: what may begin the query of a link.
std::size_t findQueryMark(std::string_view text, std::size_t begin);

// The first byte that ends every link: a blank, a control, "<" or ">".
std::size_t findBlank(std::string_view text, std::size_t begin);

// Behind the last such byte between `floor` and `end`; `floor` if there is none.
std::size_t behindLastBlank(std::string_view text, std::size_t floor, std::size_t end);

// The first byte at which the end of a link needs more thought: one that ends every link, a bracket, a quote,
// a backslash, ":", ";", "^", "|", a character outside ASCII.
std::size_t findLinkDelimiter(std::string_view text, std::size_t begin);

// The first "&" or "=".
std::size_t findSeparator(std::string_view text, std::size_t begin);

// The first byte that is not to be taken as it stands in a name or value: "%", one that ends every link, a
// character outside ASCII.
std::size_t findCoded(std::string_view text, std::size_t begin);

// The same, byte by byte: what the others have to give on every machine.
namespace portable {

std::size_t findQueryMark(std::string_view text, std::size_t begin);
std::size_t findBlank(std::string_view text, std::size_t begin);
std::size_t behindLastBlank(std::string_view text, std::size_t floor, std::size_t end);
std::size_t findLinkDelimiter(std::string_view text, std::size_t begin);
std::size_t findSeparator(std::string_view text, std::size_t begin);
std::size_t findCoded(std::string_view text, std::size_t begin);

} // namespace portable

} // namespace velmora
