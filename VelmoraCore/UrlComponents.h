#pragma once

#include <optional>
#include <string_view>

namespace velmora {

// A URL cut at its delimiters as RFC 3986 has it. Nothing is decoded, resolved or normalised: every piece is
// a view of the text that was parsed. An absent piece and an empty one differ.
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
