#include <VelmoraCore/Text/CharacterTables.h>
#include <VelmoraCore/Text/Normalization.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>

namespace velmora {

namespace {

// Syllables of Hangul are made of parts by calculation (The Unicode Standard, section 3.12).
namespace hangul {

constexpr char32_t firstSyllable = 0xAC00;
constexpr char32_t firstLeading = 0x1100;
constexpr char32_t firstVowel = 0x1161;
constexpr char32_t beforeTrailing = 0x11A7;
constexpr char32_t leadingCount = 19;
constexpr char32_t vowelCount = 21;
constexpr char32_t trailingCount = 28; // With the syllables that have none.

bool isSyllable(char32_t point)
{
    return point >= firstSyllable && point - firstSyllable < leadingCount * vowelCount * trailingCount;
}

void decompose(char32_t syllable, std::u32string &parts)
{
    const char32_t index = syllable - firstSyllable;
    parts.push_back(firstLeading + index / (vowelCount * trailingCount));
    parts.push_back(firstVowel + index / trailingCount % vowelCount);
    if (index % trailingCount != 0)
        parts.push_back(beforeTrailing + index % trailingCount);
}

// 0 if the two make no syllable.
char32_t composed(char32_t first, char32_t second)
{
    if (first >= firstLeading && first - firstLeading < leadingCount && second >= firstVowel &&
        second - firstVowel < vowelCount)
        return firstSyllable + ((first - firstLeading) * vowelCount + second - firstVowel) * trailingCount;
    if (isSyllable(first) && (first - firstSyllable) % trailingCount == 0 && second > beforeTrailing &&
        second - beforeTrailing < trailingCount)
        return first + second - beforeTrailing;
    return 0;
}

} // namespace hangul

std::u32string decomposed(std::u32string_view text)
{
    const auto isBefore = [](const tables::Decomposition &entry, char32_t value) {
        return entry.point < value;
    };
    std::u32string result;
    result.reserve(text.size() * 2);
    for (const char32_t point : text) {
        const auto all = tables::decompositions;
        const auto found = std::lower_bound(all.begin(), all.end(), point, isBefore);
        if (hangul::isSyllable(point))
            hangul::decompose(point, result);
        else if (found == all.end() || found->point != point)
            result.push_back(point);
        else
            for (const char32_t part :
                 tables::decompositionPool.subspan(found->parts & 0xFFFF, found->parts >> 16 & 0xFF))
                result.push_back(part);
    }
    return result;
}

std::uint8_t combiningClass(char32_t point)
{
    return propertiesOf(point).combiningClass;
}

// Marks behind a character in the order of their classes.
void putMarksInOrder(std::u32string &text)
{
    for (std::size_t at = 1; at < text.size(); ++at) {
        const char32_t mark = text[at];
        const std::uint8_t own = combiningClass(mark);
        std::size_t place = at;
        for (; own != 0 && place > 0 && combiningClass(text[place - 1]) > own; --place)
            text[place] = text[place - 1];
        text[place] = mark;
    }
}

// 0 if the two do not become one.
char32_t composedPair(char32_t first, char32_t second)
{
    if (const char32_t syllable = hangul::composed(first, second); syllable != 0)
        return syllable;
    const auto isBefore = [](const tables::Composition &entry, const tables::Composition &sought) {
        return entry.first != sought.first ? entry.first < sought.first : entry.second < sought.second;
    };
    const auto all = tables::compositions;
    const auto found =
        std::lower_bound(all.begin(), all.end(), tables::Composition{first, second, 0}, isBefore);
    return found != all.end() && found->first == first && found->second == second ? found->whole : 0;
}

// Each mark joins the last character that can begin a pair, unless one of its own class or none stands between.
void composePairs(std::u32string &text)
{
    constexpr std::size_t none = SIZE_MAX;
    std::size_t written = 0;
    std::size_t starter = none;
    std::uint8_t lastClass = 0;
    for (const char32_t point : text) {
        const std::uint8_t own = combiningClass(point);
        const bool isBlocked = starter != none && written > starter + 1 && lastClass >= own;
        const char32_t whole = starter != none && !isBlocked ? composedPair(text[starter], point) : 0;
        if (whole != 0) {
            text[starter] = whole;
            continue;
        }
        if (own == 0)
            starter = written;
        lastClass = own;
        text[written++] = point;
    }
    text.resize(written);
}

} // namespace

bool mayNeedComposing(std::u32string_view text)
{
    std::uint8_t before = 0;
    for (const char32_t point : text) {
        const CharacterProperties &character = propertiesOf(point);
        if (!character.staysComposed || (character.combiningClass != 0 && character.combiningClass < before))
            return true;
        before = character.combiningClass;
    }
    return false;
}

std::u32string composed(std::u32string_view text)
{
    std::u32string result = decomposed(text);
    putMarksInOrder(result);
    composePairs(result);
    return result;
}

} // namespace velmora
