#pragma once

#include <optional>
#include <string_view>

namespace velmora {

// A URL split at its delimiters by the rules of RFC 3986. Nothing is decoded, resolved or normalised: every
// component is a view of the parsed text. An absent component and an empty one differ.
struct UrlComponents {
    std::optional<std::string_view> scheme;
    std::optional<std::string_view> user;
    std::optional<std::string_view> password;
    std::optional<std::string_view> host; // A literal keeps its brackets.
    std::optional<std::string_view> port; // Digits, perhaps none.
    std::string_view path;
    std::optional<std::string_view> query;
    std::optional<std::string_view> fragment;

    // Nothing when the text is no URL: a scheme, host or port with characters that cannot stand there, a
    // literal host without its closing bracket.
    static std::optional<UrlComponents> parse(std::string_view url);

    bool operator==(const UrlComponents &) const = default;
};

} // namespace velmora
