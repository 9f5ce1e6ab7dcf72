#pragma once

#include <cstddef>
#include <string_view>

namespace velmora {

// "http" or "https" in any case.
bool isHttp(std::string_view scheme);

// The length of the "http" or "https" at the end of the text; all of it if there is none.
std::size_t httpSuffix(std::string_view text);

// Whether the word is a scheme that has no slashes behind its colon.
bool isSchemeWithoutSlashes(std::string_view word);

} // namespace velmora
