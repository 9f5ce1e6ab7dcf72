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

// The code point that begins at `at`, which lies within the text. Inline, because most loops over text decode.
inline CodePoint decode(std::string_view text, std::size_t at)
{
    const char32_t lead = byteAt(text, at);
    if (lead < 0x80)
        return {lead, 1};
    const auto next = [text, at](std::size_t offset) { return char32_t{byteAt(text, at + offset)} & 0x3FU; };
    if (lead < 0xC2 || lead > 0xF4 || !isContinuation(text, at + 1))
        return {illFormed, 1};
    if (lead < 0xE0)
        return {(lead & 0x1FU) << 6 | next(1), 2};
    if (!isContinuation(text, at + 2))
        return {illFormed, 1};
    if (lead < 0xF0) {
        const char32_t value = (lead & 0x0FU) << 12 | next(1) << 6 | next(2);
        const bool isSurrogate = value >= 0xD800 && value <= 0xDFFF;
        return value < 0x800 || isSurrogate ? CodePoint{illFormed, 1} : CodePoint{value, 3};
    }
    if (!isContinuation(text, at + 3))
        return {illFormed, 1};
    const char32_t value = (lead & 0x07U) << 18 | next(1) << 12 | next(2) << 6 | next(3);
    return value < 0x10000 || value > 0x10FFFF ? CodePoint{illFormed, 1} : CodePoint{value, 4};
}

// The code point that ends before `end`, which lies behind `floor`, with a byte outside ASCII.
CodePoint decodeLongBefore(std::string_view text, std::size_t end, std::size_t floor);

// The code point that ends before `end`, which lies behind `floor`; nothing before `floor` is looked at.
inline CodePoint decodeBefore(std::string_view text, std::size_t end, std::size_t floor)
{
    const unsigned char last = byteAt(text, end - 1);
    return last < 0x80 ? CodePoint{last, 1} : decodeLongBefore(text, end, floor);
}

bool isWellFormed(std::string_view text);

void append(std::string &text, char32_t point);

std::string encoded(std::u32string_view points);

// How many UTF-16 units a text takes. An ill-formed byte counts as one unit, a replacement character.
std::size_t utf16Length(std::string_view text);

} // namespace velmora::utf8
