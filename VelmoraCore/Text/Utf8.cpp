#include <VelmoraCore/Text/Utf8.h>

namespace velmora::utf8 {

namespace {

char32_t continuation(std::string_view text, std::size_t at)
{
    return byteAt(text, at) & 0x3FU;
}

CodePoint decodeFour(std::string_view text, std::size_t at, char32_t lead)
{
    if (!isContinuation(text, at + 1) || !isContinuation(text, at + 2) || !isContinuation(text, at + 3))
        return {illFormed, 1};
    const char32_t value = (lead & 0x07U) << 18 | continuation(text, at + 1) << 12 |
                           continuation(text, at + 2) << 6 | continuation(text, at + 3);
    return value < 0x10000 || value > 0x10FFFF ? CodePoint{illFormed, 1} : CodePoint{value, 4};
}

CodePoint decodeThree(std::string_view text, std::size_t at, char32_t lead)
{
    if (!isContinuation(text, at + 1) || !isContinuation(text, at + 2))
        return {illFormed, 1};
    const char32_t value =
        (lead & 0x0FU) << 12 | continuation(text, at + 1) << 6 | continuation(text, at + 2);
    const bool surrogate = value >= 0xD800 && value <= 0xDFFF;
    return value < 0x800 || surrogate ? CodePoint{illFormed, 1} : CodePoint{value, 3};
}

} // namespace

CodePoint decodeLong(std::string_view text, std::size_t at)
{
    const char32_t lead = byteAt(text, at);
    if (lead >= 0xF0)
        return lead > 0xF4 ? CodePoint{illFormed, 1} : decodeFour(text, at, lead);
    if (lead >= 0xE0)
        return decodeThree(text, at, lead);
    if (lead < 0xC2 || !isContinuation(text, at + 1))
        return {illFormed, 1};
    return {(lead & 0x1FU) << 6 | continuation(text, at + 1), 2};
}

CodePoint decodeBefore(std::string_view text, std::size_t end, std::size_t floor)
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
