#pragma once

#include <cstdint>
#include <span>

// The mapping of Unicode Technical Standard #46.
namespace velmora::tables {

constexpr std::uint32_t ignoredInNames = 0x40000000;
constexpr std::uint32_t disallowedInNames = 0x40000001;
constexpr std::uint32_t mappedToSequence = 0x80000000; // A flag.

// A run reaches from `first` to before the next run's first. Its code points are ignored, disallowed, or become
// `target` and those that follow it, or all become the same sequence: how many code points (bits 16 to 23) from
// which one of the pool on (bits 0 to 15).
struct NameRun {
    char32_t first;
    std::uint32_t target;
};

extern const std::span<const NameRun> nameRuns;
extern const std::span<const char32_t> namePool;

} // namespace velmora::tables
