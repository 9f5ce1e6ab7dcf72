#pragma once

#include <cstddef>
#include <string_view>

// Searches over bytes, sixteen at a time where the processor can.
namespace velmora {

// The first byte from `begin` that ends every link: a blank, a control, "<" or ">". The text's size if there
// is none.
std::size_t findBlank(std::string_view text, std::size_t begin);

// Behind the last such byte between `floor` and `end`; `floor` if there is none.
std::size_t behindLastBlank(std::string_view text, std::size_t floor, std::size_t end);

// The first byte from `begin` at which the end of a link needs more thought: one that ends every link, a
// bracket, a double quote, a character outside ASCII. The text's size if there is none.
std::size_t findLinkDelimiter(std::string_view text, std::size_t begin);

// The same, byte by byte: what the others have to give on every machine.
namespace portable {

std::size_t findBlank(std::string_view text, std::size_t begin);
std::size_t behindLastBlank(std::string_view text, std::size_t floor, std::size_t end);
std::size_t findLinkDelimiter(std::string_view text, std::size_t begin);

} // namespace portable

} // namespace velmora
