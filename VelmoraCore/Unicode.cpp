#include <VelmoraCore/Text/CharacterClasses.h>
#include <VelmoraCore/Text/CharacterProperties.h>
#include <VelmoraCore/Text/Normalization.h>
#include <VelmoraCore/Text/Utf8.h>
#include <VelmoraCore/Unicode.h>

#include <optional>

namespace velmora {

namespace {

// The only letter whose lower case is more than one code point: "i" and a dot above.
constexpr char32_t dottedCapitalI = 0x130;
constexpr char32_t dotAbove = 0x307;

// Marks, and the scripts of East Asia. A quick answer for most of what has no cases.
bool hasNoCases(char32_t point)
{
    return (point >= 0x300 && point < 0x345) || (point >= 0x2E80 && point < 0xA640);
}

// Letters that stand composed in form C and change nothing before them: those of Latin and Cyrillic, syllables
// and ideographs of East Asia. A quick answer for most text; combining marks are none of them.
bool isCertainlyComposed(std::string_view text)
{
    for (std::size_t at = 0; at < text.size();) {
        const utf8::CodePoint point = utf8::decode(text, at);
        const char32_t value = point.value;
        const bool isComposed = value < 0x300 || (value >= 0x400 && value < 0x483) ||
                                (value >= 0x3041 && value < 0x3097) || (value >= 0x30A1 && value < 0x30FB) ||
                                (value >= 0x3400 && value < 0xA000) || (value >= 0xAC00 && value < 0xD7A4);
        if (!isComposed)
            return false;
        at += point.length;
    }
    return true;
}

char32_t lowercased(char32_t point)
{
    if (point == utf8::illFormed || hasNoCases(point))
        return point;
    return point == dottedCapitalI ? U'i' : lowerCase(point);
}

// The lower case of a text that is `lower` up to `at`, where the first letter stands whose lower case is not ASCII.
std::string withOtherCases(std::string_view lower, std::string_view text, std::size_t at)
{
    std::string result(lower.substr(0, at));
    while (at < text.size()) {
        const utf8::CodePoint point = utf8::decode(text, at);
        if (point.value < 0x80)
            result.push_back(characters::lower(text[at]));
        else if (point.value == utf8::illFormed)
            result.push_back(text[at]);
        else
            utf8::append(result, lowercased(point.value));
        if (point.value == dottedCapitalI)
            utf8::append(result, dotAbove);
        at += point.length;
    }
    return result;
}

bool isWhitespace(char32_t point)
{
    return point == 0x09 || point == 0x20 || point == 0xA0 || point == 0x1680 ||
           (point >= 0x2000 && point <= 0x200B) || point == 0x202F || point == 0x205F || point == 0x3000;
}

bool isWhitespaceOrNewline(char32_t point)
{
    return isWhitespace(point) || (point >= 0x0A && point <= 0x0D) || point == 0x85 || point == 0x2028 ||
           point == 0x2029;
}

template<typename Belongs>
std::string_view trimmed(std::string_view text, Belongs belongs)
{
    while (!text.empty()) {
        const utf8::CodePoint first = utf8::decode(text, 0);
        if (!belongs(first.value))
            break;
        text.remove_prefix(first.length);
    }
    while (!text.empty()) {
        const utf8::CodePoint last = utf8::decodeBefore(text, text.size(), 0);
        if (!belongs(last.value))
            break;
        text.remove_suffix(last.length);
    }
    return text;
}

// Putting marks in order takes the square of how many stand in a row, so texts with more than any writing has
// are left as they are; so is what is not UTF-8.
std::optional<std::u32string> composable(std::string_view text)
{
    constexpr std::size_t mostMarks = 30;
    std::u32string points;
    points.reserve(text.size());
    std::size_t marks = 0;
    for (std::size_t at = 0; at < text.size();) {
        const utf8::CodePoint point = utf8::decode(text, at);
        if (point.value == utf8::illFormed)
            return std::nullopt;
        at += point.length;
        const bool isMark =
            point.value >= 0x300 && propertiesOf(point.value).category == CharacterCategory::mark;
        marks = isMark ? marks + 1 : 0;
        if (marks > mostMarks)
            return std::nullopt;
        points.push_back(point.value);
    }
    return points;
}

ClusterBreak clusterBreak(char32_t point)
{
    return propertiesOf(point).clusterBreak;
}

// An even number of flags halves before the cut leaves the next half to begin a flag of its own.
bool endsWithLoneRegionalIndicator(std::string_view text)
{
    bool lone = false;
    while (!text.empty()) {
        const utf8::CodePoint last = utf8::decodeBefore(text, text.size(), 0);
        if (clusterBreak(last.value) != ClusterBreak::regionalIndicator)
            break;
        lone = !lone;
        text.remove_suffix(last.length);
    }
    return lone;
}

bool hangulJoins(ClusterBreak before, ClusterBreak after)
{
    using enum ClusterBreak;
    if (before == leading)
        return after == leading || after == vowel || after == syllableWithoutTrailing || after == syllable;
    if (before == syllableWithoutTrailing || before == vowel)
        return after == vowel || after == trailing;
    return (before == syllable || before == trailing) && after == trailing;
}

bool isVisibleAscii(char c)
{
    return c > ' ' && c < '\x7F';
}

bool isControl(ClusterBreak clusterClass)
{
    using enum ClusterBreak;
    return clusterClass == control || clusterClass == carriageReturn || clusterClass == lineFeed;
}

} // namespace

std::string lowercased(std::string_view text)
{
    std::string result(text);
    for (std::size_t at = 0; at < text.size();) {
        const utf8::CodePoint point = utf8::decode(text, at);
        if (point.value < 0x80)
            result[at] = characters::lower(text[at]);
        else if (lowercased(point.value) != point.value)
            return withOtherCases(result, text, at);
        at += point.length;
    }
    return result;
}

std::string_view trimmedWhitespace(std::string_view text)
{
    return trimmed(text, isWhitespace);
}

std::string_view trimmedWhitespaceAndNewlines(std::string_view text)
{
    return trimmed(text, isWhitespaceOrNewline);
}

std::string canonicalForm(std::string text)
{
    if (isCertainlyComposed(text))
        return text;
    const std::optional<std::u32string> points = composable(text);
    return points && mayNeedComposing(*points) ? utf8::encoded(composed(*points)) : text;
}

bool isCharacterBoundary(std::string_view text, std::size_t at)
{
    if (at == 0 || at == text.size() || (isVisibleAscii(text[at - 1]) && isVisibleAscii(text[at])))
        return true;
    const std::string_view before = text.substr(0, at);
    const char32_t after = utf8::decode(text, at).value;
    const char32_t last = utf8::decodeBefore(before, before.size(), 0).value;
    if (last == utf8::illFormed || after == utf8::illFormed)
        return true;
    using enum ClusterBreak;
    const ClusterBreak left = clusterBreak(last);
    const ClusterBreak right = clusterBreak(after);
    if (left == carriageReturn && right == lineFeed)
        return false;
    if (isControl(left) || isControl(right))
        return true;
    if (right == extend || right == joiner || right == spacingMark || left == prepend)
        return false;
    if (left == joiner && propertiesOf(after).isPictographic)
        return false;
    if (left == regionalIndicator && right == regionalIndicator)
        return !endsWithLoneRegionalIndicator(before);
    return !hangulJoins(left, right);
}

} // namespace velmora
