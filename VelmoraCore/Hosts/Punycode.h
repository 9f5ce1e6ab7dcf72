#pragma once

#include <optional>
#include <string>

// The spelling of Unicode in the letters, digits and hyphens of domain names (RFC 3492).
namespace velmora::punycode {

// Without the prefix "xn--". Takes the square of the length: for labels of names.
std::string encoded(std::u32string_view label);

// Nothing if `spelling` is not one.
std::optional<std::u32string> decoded(std::u32string_view spelling);

} // namespace velmora::punycode
