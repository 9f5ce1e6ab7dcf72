#pragma once

#include <VelmoraCore/Detection/LinkSurroundings.h>

#include <cstddef>
#include <string_view>

namespace velmora {

// Path, query and fragment of a link in running text.
struct LinkTail {
    std::size_t end = 0;      // Behind the last byte that belongs to the link.
    std::size_t query = 0;    // The "?" that begins the query; `fragment` without one.
    std::size_t fragment = 0; // The "#" that begins the fragment; `end` without one.
    // More of the link follows in a spelling of the language around it, as in "a=1\u0026b=2": changing what
    // stands before that breaks the link.
    bool goesOn = false;
};

// Finds where the link of the web whose path, query or fragment begins at `begin` ends: by the standard's
// termination algorithm, and before that where a query meets what a browser never writes into one, where the
// text takes up what stands before the link, and where the next link begins.
LinkTail webTail(std::string_view text, std::size_t begin, const LinkSurroundings &around);

// The same for a link of another scheme: by the standard's algorithm and the quotes around the link.
LinkTail otherTail(std::string_view text, std::size_t begin, const LinkSurroundings &around);

} // namespace velmora
