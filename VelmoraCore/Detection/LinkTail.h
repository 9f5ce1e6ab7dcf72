#pragma once

#include <cstddef>
#include <string_view>

namespace velmora {

// Path, query and fragment of a link in running text.
struct LinkTail {
    std::size_t end;      // Behind the last byte that belongs to the link.
    std::size_t query;    // The "?" that begins the query; `fragment` without one.
    std::size_t fragment; // The "#" that begins the fragment; `end` without one.
};

// What, beside the characters themselves, ends a link.
enum class Quoting { none, quoted, escapedQuoted };

// Finds where the link whose path, query or fragment begins at `begin` ends, by the standard's termination
// algorithm.
LinkTail linkTail(std::string_view text, std::size_t begin, Quoting quoting);

} // namespace velmora
