#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace velmora {

// The spelling in ASCII of a domain name, as servers are asked for it: Unicode Technical Standard #46, without its
// transition, with its checks of hyphens, joiners and directions, and with any ASCII character allowed. Nothing if
// the name is not valid, or not UTF-8. A name may end in a dot; no other label may be empty.
std::optional<std::string> asciiName(std::string_view name);

// A label as names are compared, in UTF-8: case folded, compatible forms unified, joiners left out. Nothing if it
// has a character that no name has.
std::optional<std::string> foldedLabel(std::string_view label);

} // namespace velmora
