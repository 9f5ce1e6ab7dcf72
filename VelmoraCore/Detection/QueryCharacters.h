#pragma once

namespace velmora {

// Whether a character outside ASCII ends a query: everything but letters, marks and digits does, because
// browsers write it percent-encoded there. So does a letter of a script without blanks between words if the
// name or value it stands in `beganInAscii`: prose that follows.
bool endsQuery(char32_t point, bool beganInAscii);

// The same for a letter of any other script than Latin, which ends a query that has no further parameter.
bool mayEndQuery(char32_t point, bool beganInAscii);

// Whether a character that a text spells out, as in "\u0026", would belong to the query if it stood there.
bool continuesQuery(char32_t point, bool beganInAscii);

} // namespace velmora
