#pragma once

#include <cstdint>

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

// Those of an unassigned character for what is no code point.
const CharacterProperties &propertiesOf(char32_t point);

// The simple mapping, locale-free.
char32_t lowerCase(char32_t point);

} // namespace velmora
