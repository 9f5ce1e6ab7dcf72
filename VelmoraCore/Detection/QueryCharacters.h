#pragma once

namespace velmora {

// Whether a character outside ASCII ends a query: everything but letters, marks and digits does, because
// browsers write it percent-encoded there. So does a letter of another script than Latin if the name or
// value it stands in `beganInAscii`: prose that follows without a blank.
bool endsQuery(char32_t point, bool beganInAscii);

// Whether a character that a text spells out, as in "\u0026", would belong to the query if it stood there.
bool continuesQuery(char32_t point, bool beganInAscii);

} // namespace velmora
