#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace velmora {

// A link in a text.
struct LinkMatch {
    // Its position, in UTF-16 code units.
    std::size_t offset;
    std::size_t length;
    // The link as written, with "http://" or "mailto:" before it if it stands there without a scheme.
    std::string url;

    // The URL's host: escapes decoded, a literal without its brackets, an internationalised name in its ASCII
    // spelling, ASCII letters in their case. Nothing for links without a host, such as e-mail addresses.
    [[nodiscard]] std::optional<std::string> host() const;

    bool operator==(const LinkMatch &) const = default;
};

// Finds links in running text: URLs of any scheme, web addresses without a scheme, e-mail addresses.
//
// Stateless; any thread may use it. Time is linear in the text's length.
class LinkDetector {
public:
    // All links in the order of the text; they never overlap. The text is UTF-8; a byte that is not counts as
    // one UTF-16 unit and ends a link.
    [[nodiscard]] std::vector<LinkMatch> matches(std::string_view text) const;
};

} // namespace velmora
