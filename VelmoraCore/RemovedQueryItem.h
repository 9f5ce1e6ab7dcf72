#pragma once

#include <optional>
#include <string>

namespace velmora {

// One parameter that was removed from a link.
struct RemovedQueryItem {
    // As it stood in the link: percent-decoded, case and blanks unaltered.
    std::string name;
    // Percent-decoded; empty text for "name=". Nothing when the parameter had no "=", or when its value is
    // not UTF-8 once decoded.
    std::optional<std::string> value;

    bool operator==(const RemovedQueryItem &) const = default;
};

} // namespace velmora
