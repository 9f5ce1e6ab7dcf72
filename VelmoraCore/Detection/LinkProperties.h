#pragma once

#include <cstdint>

namespace velmora {

// How a code point behaves in the path, query or fragment of a link in running text.
enum class LinkTerm : std::uint8_t {
    hard,    // Ends the link.
    soft,    // Belongs to the link only when more of it follows: a full stop, a comma.
    open,    // Opens a bracket; belongs to the link only when more of it follows.
    close,   // Belongs to the link when it closes the innermost open bracket; otherwise ends it.
    include, // Belongs to the link.
};

// The value of the property Link_Term. What is no code point is hard.
LinkTerm linkTerm(char32_t point);

// The opening bracket that `close` belongs to, 0 if there is none.
char32_t linkBracket(char32_t close);

// The property Link_Email: may stand in the local part of an e-mail address (beside the full stop).
bool linkEmail(char32_t point);

} // namespace velmora
