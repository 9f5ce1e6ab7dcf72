#pragma once

#include <VelmoraCore/Detection/LinkProperties.h>

namespace velmora {

// What a character outside ASCII does to a link.
struct LinkCharacter {
    LinkTerm term = LinkTerm::hard;
    // In a query: everything but letters, marks and digits ends one, because browsers write it percent-encoded
    // there.
    bool endsQuery = true;
    // The same in a name or value that began in ASCII: letters of a script without blanks between words are
    // prose that follows.
    bool endsAscii = true;
    // Ends such a query only if it has no further parameter: a letter of any other script than Latin.
    bool mayEndAscii = false;
};

// Answers given before are remembered: a text uses few characters again and again.
LinkCharacter linkCharacter(char32_t point);

// Whether a character that a text spells out, as in "\u0026", would belong to the query if it stood there.
bool continuesQuery(char32_t point, bool beganInAscii);

} // namespace velmora
