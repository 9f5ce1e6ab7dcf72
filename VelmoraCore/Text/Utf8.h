#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace velmora::utf8 {

// Stands for a byte that is part of no well-formed sequence.
inline constexpr char32_t illFormed = 0xFFFFFFFF;

struct CodePoint {
    char32_t value;
    std::size_t length; // Bytes; 1 for an ill-formed one.
};

inline unsigned char byteAt(std::string_view text, std::size_t at)
{
    return static_cast<unsigned char>(text[at]);
}

inline bool isContinuation(std::string_view text, std::size_t at)
{
    return at < text.size() && (byteAt(text, at) & 0xC0U) == 0x80;
}

// The code point that begins at `at`, where a byte outside ASCII stands.
CodePoint decodeLong(std::string_view text, std::size_t at);

// The code point that begins at `at`, which lies within the text.
inline CodePoint decode(std::string_view text, std::size_t at)
{
    const unsigned char lead = byteAt(text, at);
    return lead < 0x80 ? CodePoint{lead, 1} : decodeLong(text, at);
}

// The code point that ends before `end`, which lies behind `floor`; nothing before `floor` is looked at.
CodePoint decodeBefore(std::string_view text, std::size_t end, std::size_t floor);

bool isWellFormed(std::string_view text);

void append(std::string &text, char32_t point);

std::string encoded(std::u32string_view points);

// How many UTF-16 units a text takes. An ill-formed byte counts as one unit, a replacement character.
std::size_t utf16Length(std::string_view text);

} // namespace velmora::utf8
