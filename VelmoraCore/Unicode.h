#pragma once

#include <string>
#include <string_view>

namespace velmora {

// Text operations on UTF-8, independent of any locale. Bytes that are not UTF-8 pass through unchanged.

// Full lower-casing, code point by code point: "İ" gives "i" and a dot above, the final sigma has no rule of
// its own.
std::string lowercased(std::string_view text);

// The text without blanks at both ends: tab, the space characters, no-break spaces, zero-width space.
std::string_view trimmedWhitespace(std::string_view text);

// The same, and without line feeds, carriage returns, vertical tabs, form feeds, U+0085, U+2028 and U+2029.
std::string_view trimmedWhitespaceAndNewlines(std::string_view text);

// The one spelling (normalisation form C) of all texts that are canonically equivalent. A text with more than
// 30 combining marks in a row is left as it is.
std::string canonicalForm(std::string text);

// Whether a character as the reader sees it ends before the byte at `at`: not within "é", in whatever
// spelling. A prefix of equal bytes is a prefix only then. Both ends of a text are boundaries.
bool isCharacterBoundary(std::string_view text, std::size_t at);

} // namespace velmora
