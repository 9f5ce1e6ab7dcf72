#pragma once

#include <VelmoraCore/Text/CharacterProperties.h>

#include <cstdint>
#include <span>

namespace velmora::tables {

struct LowerCase {
    char32_t point;
    char32_t lower;
};

// The full canonical decomposition: how many code points (bits 16 to 23) from which one of the pool on (bits 0 to
// 15). Hangul syllables are not listed.
struct Decomposition {
    char32_t point;
    std::uint32_t parts;
};

struct Composition {
    char32_t first;
    char32_t second;
    char32_t whole;
};

// Each in ascending order.
extern const std::span<const LowerCase> lowerCases;
extern const std::span<const Decomposition> decompositions;
extern const std::span<const Composition> compositions;
extern const std::span<const char32_t> decompositionPool;

} // namespace velmora::tables
