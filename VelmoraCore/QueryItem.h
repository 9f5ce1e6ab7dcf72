#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace velmora {

// One piece of a query between two "&", as it is written there. The views belong to the query.
struct QueryItem {
    std::string_view name;
    std::optional<std::string_view> value = std::nullopt; // Nothing without "=".
    // Known to need no decoding: neither escapes nor blanks nor characters outside ASCII.
    bool plain = false;

    bool operator==(const QueryItem &other) const { return name == other.name && value == other.value; }
};

// The item that begins at `begin` in a query.
QueryItem itemAt(std::string_view query, std::size_t begin);

// The text with its "%XX" decoded; what is no escape stays as it is. Nothing if the result is not UTF-8.
std::optional<std::string> percentDecoded(std::string_view text);

// Appends a name or a value as it is written into a query: what may stand there unescaped is written as
// itself, everything else as "%XX". An escape is undone only where the plain character means the same to
// every server and nothing in the languages that links stand in: letters, digits and "-._~/:@?,". Malformed
// escapes, escaped bytes that are not UTF-8 and the placeholders of templates, "{name}", are written as they
// stood.
void appendQueryText(std::string &query, std::string_view text);

// Escapes the last character of a query. It is one of ASCII.
void escapeLast(std::string &query);

// Escapes the round brackets from `begin` on if some have no counterpart there.
void escapeOpenBrackets(std::string &query, std::size_t begin);

// Escapes `mark` from `begin` on, where `text` was written, if `text` holds its escape.
void keepEscaped(std::string &query, std::size_t begin, std::string_view text, char mark);

} // namespace velmora
