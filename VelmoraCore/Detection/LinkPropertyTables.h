#pragma once

#include <VelmoraCore/Detection/LinkProperties.h>

#include <span>

// The property data behind LinkProperties.h.
namespace velmora::tables {

// A run reaches from `first` to before the next run's first.
struct LinkTermRun {
    char32_t first;
    LinkTerm value;
};

struct LinkBracketPair {
    char32_t close;
    char32_t open;
};

extern const std::span<const LinkTermRun> linkTermRuns;
extern const std::span<const LinkBracketPair> linkBracketPairs; // Sorted by the closing one.
// Where the property changes: from the first entry on it does not hold, from the second on it does, and so
// on.
extern const std::span<const char32_t> linkEmailChanges;

} // namespace velmora::tables
