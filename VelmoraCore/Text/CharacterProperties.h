#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>

namespace velmora {

// What Unicode says about a character, as far as links and domain names ask. Values that nothing here tells apart
// share one name.

enum class CharacterCategory : std::uint8_t { other, letter, mark, number, otherNumber, symbol };

// Scripts written without blanks between words, and Hangul, whose particles follow a word without one, are
// `withoutBlanks`.
enum class ScriptGroup : std::uint8_t { other, latin, common, inherited, withoutBlanks };

enum class ClusterBreak : std::uint8_t {
    other,
    control,
    carriageReturn,
    lineFeed,
    extend,
    joiner,
    spacingMark,
    prepend,
    regionalIndicator,
    leading,
    vowel,
    trailing,
    syllableWithoutTrailing,
    syllable,
};

enum class Direction : std::uint8_t { other, left, right, arabicNumber, europeanNumber, nonspacing, neutral };

enum class Joining : std::uint8_t { none, left, right, dual, transparent };

struct CharacterProperties {
    CharacterCategory category;
    ScriptGroup script;
    ClusterBreak clusterBreak;
    Direction direction;
    Joining joining;
    std::uint8_t combiningClass;
    bool isPictographic;
    bool hasLowerCase;  // Of one code point, another than itself.
    bool staysComposed; // In normalisation form C, whatever stands before it.
};

namespace tables {

// Code points come in pages of 128. For each page its number, and for each code point of a numbered page the number
// of its record.
extern const std::span<const std::uint16_t> characterPages;
extern const std::span<const std::uint8_t> characterNumbers;
extern const std::span<const CharacterProperties> characterRecords;

} // namespace tables

// Those of an unassigned character for what is no code point.
inline const CharacterProperties &propertiesOf(char32_t point)
{
    constexpr std::size_t pageSize = 128;
    constexpr char32_t lastCodePoint = 0x10FFFF; // Unassigned, for good.
    const std::size_t known = std::min(point, lastCodePoint);
    const std::size_t page = tables::characterPages[known / pageSize];
    return tables::characterRecords[tables::characterNumbers[page * pageSize + known % pageSize]];
}

// The simple mapping, locale-free.
char32_t lowerCase(char32_t point);

} // namespace velmora
