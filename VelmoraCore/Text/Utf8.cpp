#include <VelmoraCore/Text/Utf8.h>

#include <cstdint>
#include <cstring>

namespace velmora::utf8 {

namespace {

constexpr std::size_t wordSize = sizeof(std::uint64_t);

bool isAsciiWord(const char *bytes)
{
    std::uint64_t word = 0;
    std::memcpy(&word, bytes, wordSize);
    return (word & 0x8080808080808080U) == 0;
}

} // namespace

CodePoint decodeLongBefore(std::string_view text, std::size_t end, std::size_t floor)
{
    std::size_t start = end - 1;
    while (start > floor && end - start < 4 && isContinuation(text, start))
        --start;
    const CodePoint point = decode(text.substr(0, end), start);
    if (point.value != illFormed && start + point.length == end)
        return point;
    return {illFormed, 1};
}

bool isWellFormed(std::string_view text)
{
    for (std::size_t at = 0; at < text.size();) {
        const CodePoint point = decode(text, at);
        if (point.value == illFormed)
            return false;
        at += point.length;
    }
    return true;
}

std::size_t utf16Length(std::string_view text)
{
    std::size_t units = 0;
    for (std::size_t at = 0; at < text.size();) {
        if (at + wordSize <= text.size() && isAsciiWord(text.data() + at)) {
            units += wordSize;
            at += wordSize;
            continue;
        }
        const CodePoint point = decode(text, at);
        units += point.length == 4 ? 2 : 1;
        at += point.length;
    }
    return units;
}

void append(std::string &text, char32_t point)
{
    const auto byte = [&text](char32_t value) { text.push_back(static_cast<char>(value)); };
    if (point < 0x80) {
        byte(point);
    } else if (point < 0x800) {
        byte(0xC0 | point >> 6);
        byte(0x80 | (point & 0x3F));
    } else if (point < 0x10000) {
        byte(0xE0 | point >> 12);
        byte(0x80 | (point >> 6 & 0x3F));
        byte(0x80 | (point & 0x3F));
    } else {
        byte(0xF0 | point >> 18);
        byte(0x80 | (point >> 12 & 0x3F));
        byte(0x80 | (point >> 6 & 0x3F));
        byte(0x80 | (point & 0x3F));
    }
}

std::string encoded(std::u32string_view points)
{
    std::string text;
    text.reserve(points.size() * 2);
    for (const char32_t point : points)
        append(text, point);
    return text;
}

} // namespace velmora::utf8
