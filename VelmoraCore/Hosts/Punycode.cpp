#include <VelmoraCore/Hosts/Punycode.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <limits>

namespace velmora::punycode {

namespace {

// The parameters of section 5 of the standard, and its names.
constexpr std::uint32_t base = 36;
constexpr std::uint32_t tMin = 1;
constexpr std::uint32_t tMax = 26;
constexpr std::uint32_t skew = 38;
constexpr std::uint32_t damp = 700;
constexpr std::uint32_t initialBias = 72;
constexpr std::uint32_t initialN = 0x80;

std::uint32_t adapted(std::uint32_t delta, std::uint32_t points, bool isFirst)
{
    delta = isFirst ? delta / damp : delta / 2;
    delta += delta / points;
    std::uint32_t k = 0;
    for (; delta > (base - tMin) * tMax / 2; k += base)
        delta /= base - tMin;
    return k + (base - tMin + 1) * delta / (delta + skew);
}

std::uint32_t threshold(std::uint32_t k, std::uint32_t bias)
{
    return k <= bias ? tMin : std::min(k - bias, tMax);
}

char digit(std::uint32_t value)
{
    return static_cast<char>(value < 26 ? 'a' + value : '0' + (value - 26));
}

// `base` if the character is no digit.
std::uint32_t valueOf(char32_t character)
{
    if (character >= U'a' && character <= U'z')
        return character - U'a';
    if (character >= U'A' && character <= U'Z')
        return character - U'A';
    return character >= U'0' && character <= U'9' ? character - U'0' + 26 : base;
}

void appendNumber(std::string &spelling, std::uint32_t number, std::uint32_t bias)
{
    for (std::uint32_t k = base;; k += base) {
        const std::uint32_t t = threshold(k, bias);
        if (number < t)
            break;
        spelling.push_back(digit(t + (number - t) % (base - t)));
        number = (number - t) / (base - t);
    }
    spelling.push_back(digit(number));
}

// Reads a number at `at` and moves behind it; nothing if it is incomplete or too large.
std::optional<std::uint32_t> readNumber(std::u32string_view spelling, std::size_t &at, std::uint32_t bias)
{
    std::uint64_t number = 0;
    std::uint64_t weight = 1;
    for (std::uint32_t k = base;; k += base) {
        const std::uint32_t value = at < spelling.size() ? valueOf(spelling[at++]) : base;
        if (value == base)
            return std::nullopt;
        number += value * weight;
        const std::uint32_t t = threshold(k, bias);
        weight *= base - t;
        if (number > std::numeric_limits<std::int32_t>::max() ||
            weight > std::numeric_limits<std::uint32_t>::max())
            return std::nullopt;
        if (value < t)
            return static_cast<std::uint32_t>(number);
    }
}

bool isScalar(std::uint32_t point)
{
    return point <= 0x10FFFF && (point < 0xD800 || point > 0xDFFF);
}

} // namespace

std::string encoded(std::u32string_view label)
{
    std::string spelling;
    for (const char32_t point : label) {
        if (point < initialN)
            spelling.push_back(static_cast<char>(point));
    }
    const auto basic = static_cast<std::uint32_t>(spelling.size());
    if (basic > 0)
        spelling.push_back('-');
    std::uint32_t n = initialN;
    std::uint32_t delta = 0;
    std::uint32_t bias = initialBias;
    for (std::uint32_t handled = basic; handled < label.size(); ++delta, ++n) {
        char32_t next = std::numeric_limits<char32_t>::max();
        for (const char32_t point : label)
            next = point >= n ? std::min(next, point) : next;
        delta += (next - n) * (handled + 1);
        n = next;
        for (const char32_t point : label) {
            delta += point < n ? 1 : 0;
            if (point != n)
                continue;
            appendNumber(spelling, delta, bias);
            bias = adapted(delta, handled + 1, handled == basic);
            delta = 0;
            ++handled;
        }
    }
    return spelling;
}

std::optional<std::u32string> decoded(std::u32string_view spelling)
{
    const std::size_t hyphen = spelling.rfind(U'-');
    const bool hasBasic = hyphen != std::u32string_view::npos && hyphen > 0;
    std::u32string label(spelling.substr(0, hasBasic ? hyphen : 0));
    if (std::any_of(label.begin(), label.end(), [](char32_t point) { return point >= initialN; }))
        return std::nullopt;
    std::uint32_t n = initialN;
    std::uint32_t i = 0;
    std::uint32_t bias = initialBias;
    bool isFirst = true;
    for (std::size_t at = hasBasic ? hyphen + 1 : 0; at < spelling.size(); isFirst = false) {
        const std::optional<std::uint32_t> delta = readNumber(spelling, at, bias);
        if (!delta)
            return std::nullopt;
        const auto points = static_cast<std::uint32_t>(label.size() + 1);
        i += *delta;
        bias = adapted(*delta, points, isFirst);
        n += i / points;
        i %= points;
        if (!isScalar(n))
            return std::nullopt;
        label.insert(i++, 1, n);
    }
    return label;
}

} // namespace velmora::punycode
