#pragma once

#include <string_view>

namespace velmora {

// Whether a label is a top-level domain in use: any case, ASCII or internationalised, in either spelling.
bool isTopLevelDomain(std::string_view label);

} // namespace velmora
