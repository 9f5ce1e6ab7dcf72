#pragma once

#include <cstddef>
#include <string_view>

namespace velmora {

// Whether a character outside ASCII may stand in the label of an internationalised host.
bool isHostCodePoint(char32_t point);

// The full stops of East Asian scripts that internationalised hosts may have in place of a dot.
bool isIdeographicDot(char32_t point);

struct HostExtent {
    std::size_t end;
    bool valid; // No empty label, no label with a hyphen at one of its ends.
};

// The host of a link with a scheme, beginning at `begin`; without the dot of the root.
HostExtent hostExtent(std::string_view text, std::size_t begin);

// The host in a stretch of host characters and dots that has no scheme before it, in places of its text. Prose of a
// script without blanks, and symbols, are no part of it where its first label changes to ASCII behind them.
struct BareHost {
    std::size_t begin;
    std::size_t end;
    bool valid;         // At least two labels, the last a known top-level domain or the first "www".
    bool looksLikeFile; // A name like "readme.md": a link only if a path follows.
};

BareHost bareHost(std::string_view text, std::size_t runBegin, std::size_t runEnd);

} // namespace velmora
