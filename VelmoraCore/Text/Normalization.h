#pragma once

#include <string>

namespace velmora {

// Whether a text may be in another form than normalisation form C. A quick answer: "no" is certain.
bool mayNeedComposing(std::u32string_view text);

// Normalisation form C (Unicode Standard Annex #15). Takes the square of the marks that stand in a row.
std::u32string composed(std::u32string_view text);

} // namespace velmora
