#pragma once

namespace velmora {

// Scripts written without blanks between words, and Hangul, whose particles follow a word without one.
bool isOfScriptWithoutBlanks(char32_t point);

} // namespace velmora
