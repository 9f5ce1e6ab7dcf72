#pragma once

#include <cstddef>
#include <string_view>

namespace velmora {

// A character that a text spells out because it stands in a language that needs that.
struct WrittenCharacter {
    char32_t value;     // What is meant; 0 if nothing is spelled out here.
    std::size_t length; // The bytes that spell it.
};

// What is not known to name a character.
inline constexpr char32_t unknownCharacter = 0xFFFFFFFE;

// HTML's character reference at the "&" at `at`, however often it was escaped ("&quot;", "&amp;#39;").
// "&amp;" itself gives "&".
WrittenCharacter characterReference(std::string_view text, std::size_t at);

// What a backslash at `at` and the characters behind it stand for in source text, JSON and the like. Layers
// of escaping are read as one. A word that typesetting systems begin with it counts as a line break.
WrittenCharacter backslashEscape(std::string_view text, std::size_t at);

} // namespace velmora
