#pragma once

#include <array>
#include <cstdint>
#include <string_view>

// What each byte may be in links. Bytes of non-ASCII characters have no class; they are decoded and asked for
// their properties.
namespace velmora::characters {

enum Class : std::uint32_t {
    host = 1U << 0,       // Letters, digits, "-" and "_".
    dot = 1U << 1,        // "."
    scheme = 1U << 2,     // Letters, digits, "+" and "-".
    letter = 1U << 3,     // A to Z in either case.
    digit = 1U << 4,      // 0 to 9
    hex = 1U << 5,        // Digits and A to F in either case.
    user = 1U << 6,       // What we accept before the "@" of an authority.
    mailbox = 1U << 7,    // May stand in the local part of an e-mail address.
    blank = 1U << 8,      // Ends every link: space, controls, "<" and ">".
    plain = 1U << 9,      // Belongs to a link's path, query and fragment without further thought.
    queryText = 1U << 10, // Stands in a query item as itself.
    literal = 1U << 11,   // May stand in the brackets of a literal host.
    nonAscii = 1U << 12,
    delimiter =
        1U << 13, // The end of a link needs more thought: blanks, brackets, quotes, ":", ";", "|", non-ASCII.
    soft = 1U << 14,      // Belongs to a link only when more of it follows.
    coded = 1U << 15,     // Not to be taken as it stands in a name or value: "%", blanks, non-ASCII.
    separator = 1U << 16, // Between the names and values of a query.
    mark = 1U << 20,      // `LinkMarks` stops there.
    key = 1U << 22,       // May stand between a separator of the text and a link: a key, marks.
    pathMark = 1U << 21,  // One of those that belongs to a path without further thought.
    slash = 1U << 17,     // "/"
    doubtful = 1U << 19,  // May stand behind the value that ends a link, as the text's.
    undone = 1U << 18, // Means the same in a query whether it is escaped or not, and nothing around the link.
};

constexpr std::array<std::uint32_t, 256> makeClasses()
{
    std::array<std::uint32_t, 256> classes{};
    const auto add = [&classes](std::string_view members, unsigned value) {
        for (const char c : members)
            classes[static_cast<unsigned char>(c)] |= value;
    };
    add("abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ",
        host | scheme | letter | user | mailbox | plain | queryText | literal | undone);
    add("0123456789", host | scheme | digit | hex | user | mailbox | plain | queryText | literal | undone);
    add("abcdefABCDEF", hex);
    add("-", host | scheme | user | mailbox | plain | queryText | literal);
    add("_", host | user | mailbox | plain | queryText | literal);
    add(".", dot | user | mailbox | queryText | literal);
    add("+", scheme | user | mailbox | plain | queryText);
    add("~", user | mailbox | plain | queryText | literal);
    add(":", user | queryText | literal);
    add("!$", user | mailbox | queryText);
    add("&*=%", user | mailbox);
    add("#'/?^`{|}", mailbox);
    add("$*%@^", plain);
    add("'()*,;@/?", queryText);
    add("<>\x7F", blank | delimiter | coded);
    add("\"'`\\|:;^()[]{}", delimiter);
    add(",|;(*.!?", doubtful);
    add("/", slash);
    add("-._~/:@?,", undone);
    add("!\"',.:;?", soft);
    add("%", coded);
    add("&=", separator);
    add("\"#$%&'():;<=>?[\\]^`{|}~\x7F", mark);
    add("$%&=~", pathMark);
    add("abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789=:_-.*~+^$/@#%&?!", key);
    for (unsigned c = 0; c <= ' '; ++c)
        classes[c] = blank | delimiter | coded | mark;
    for (unsigned c = 0x80; c <= 0xFF; ++c)
        classes[c] = nonAscii | delimiter | coded | mark;
    return classes;
}

inline constexpr std::array<std::uint32_t, 256> classes = makeClasses();

constexpr bool is(char c, unsigned wanted)
{
    return (classes[static_cast<unsigned char>(c)] & wanted) != 0;
}

constexpr char lower(char c)
{
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c;
}

constexpr bool startsIgnoringCase(std::string_view text, std::string_view lowerCase)
{
    if (text.size() < lowerCase.size())
        return false;
    for (std::size_t i = 0; i < lowerCase.size(); ++i) {
        if (lower(text[i]) != lowerCase[i])
            return false;
    }
    return true;
}

constexpr bool equalsIgnoringCase(std::string_view text, std::string_view lowerCase)
{
    return text.size() == lowerCase.size() && startsIgnoringCase(text, lowerCase);
}

constexpr bool equalsInAnyCase(std::string_view left, std::string_view right)
{
    if (left.size() != right.size())
        return false;
    for (std::size_t i = 0; i < left.size(); ++i) {
        if (lower(left[i]) != lower(right[i]))
            return false;
    }
    return true;
}

} // namespace velmora::characters
