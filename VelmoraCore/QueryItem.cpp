#include <VelmoraCore/QueryItem.h>
#include <VelmoraCore/Text/ByteSearch.h>
#include <VelmoraCore/Text/CharacterClasses.h>
#include <VelmoraCore/Text/Utf8.h>

#include <algorithm>
#include <array>

namespace velmora {

namespace {

constexpr std::string_view hexDigits = "0123456789ABCDEF";

bool isEscape(std::string_view text, std::size_t at)
{
    return text[at] == '%' && at + 2 < text.size() && characters::is(text[at + 1], characters::hex) &&
           characters::is(text[at + 2], characters::hex);
}

unsigned hexValue(char c)
{
    return characters::is(c, characters::digit) ? static_cast<unsigned>(c - '0')
                                                : static_cast<unsigned>(characters::lower(c) - 'a') + 10;
}

char escapedByte(std::string_view text, std::size_t at)
{
    return static_cast<char>(hexValue(text[at + 1]) << 4 | hexValue(text[at + 2]));
}

void appendEscaped(std::string &query, std::string_view bytes)
{
    const std::size_t begin = query.size();
    query.resize(begin + 3 * bytes.size());
    char *escape = query.data() + begin;
    for (const char byte : bytes) {
        const auto value = static_cast<unsigned char>(byte);
        *escape++ = '%';
        *escape++ = hexDigits[value >> 4];
        *escape++ = hexDigits[value & 0x0FU];
    }
}

// One byte of a name or value and how it was written.
struct WrittenByte {
    char value;
    std::size_t length; // 3 for an escape.
};

WrittenByte readByte(std::string_view text, std::size_t at)
{
    return isEscape(text, at) ? WrittenByte{escapedByte(text, at), 3} : WrittenByte{text[at], 1};
}

// A multi-byte sequence, its bytes as they stand or as escapes.
struct Sequence {
    std::array<char, 4> bytes{};
    std::size_t size = 0;
    std::size_t length = 0; // As it is written; 0 if it is not well-formed.
};

Sequence readSequence(std::string_view text, std::size_t at)
{
    Sequence sequence;
    std::array<std::size_t, 4> ends{};
    for (std::size_t i = at; i < text.size() && sequence.size < ends.size(); ++sequence.size) {
        const WrittenByte byte = readByte(text, i);
        i += byte.length;
        sequence.bytes[sequence.size] = byte.value;
        ends[sequence.size] = i - at;
    }
    const utf8::CodePoint point = utf8::decode({sequence.bytes.data(), sequence.size}, 0);
    sequence.size = point.length;
    sequence.length = point.value == utf8::illFormed ? 0 : ends[point.length - 1];
    return sequence;
}

bool isWrittenPlainly(WrittenByte byte)
{
    return characters::is(byte.value, byte.length == 1 ? characters::queryText : characters::undone);
}

// The length of a placeholder that begins with the brace at `at`: "{name}", "{{name}}", "${name[0]}"; 0 if
// none does.
std::size_t placeholderAt(std::string_view text, std::size_t at)
{
    if (at > 0 && text[at - 1] == '$') {
        constexpr std::string_view outside = "&=#%{}\"'`<>\\";
        std::size_t close = at + 1;
        while (close < text.size() && text[close] > ' ' && text[close] != '\x7F' &&
               outside.find(text[close]) == std::string_view::npos)
            ++close;
        return close < text.size() && text[close] == '}' ? close + 1 - at : 0;
    }
    const std::size_t braces = text.substr(at).starts_with("{{") ? 2 : 1;
    std::size_t end = at + braces;
    while (end < text.size() && characters::is(text[end], characters::host | characters::dot))
        ++end;
    const bool isName = end > at + braces && !characters::is(text[at + braces], characters::digit);
    const bool isClosed = text.substr(end).starts_with(braces == 2 ? "}}" : "}");
    return isName && isClosed ? end + braces - at : 0;
}

// A scheme that an escape hid within a value would begin a link of its own.
void escapeInnerSchemes(std::string &query, std::size_t begin)
{
    for (std::size_t at = query.find("://", begin); at != std::string::npos; at = query.find("://", at + 1)) {
        const std::string_view before = std::string_view(query).substr(begin, at - begin);
        const std::size_t length = before.empty() || characters::lower(before.back()) != 's' ? 4 : 5;
        if (before.size() > length && characters::equalsIgnoringCase(before.substr(before.size() - length),
                                                                     length == 4 ? "http" : "https"))
            query.replace(at, 1, "%3A");
    }
}

// How many bytes from `at` on are characters outside ASCII, written as themselves.
std::size_t bareNonAsciiLength(std::string_view text, std::size_t at)
{
    std::size_t end = at;
    while (end < text.size()) {
        const std::size_t length = utf8::decode(text, end).length;
        if (length == 1) // ASCII or ill-formed.
            break;
        end += length;
    }
    return end - at;
}

// Appends the characters outside ASCII at `at`, or the byte that is none as it stands. Gives how much they took.
std::size_t appendNonAscii(std::string &query, std::string_view text, std::size_t at)
{
    if (const std::size_t bare = bareNonAsciiLength(text, at); bare != 0) {
        appendEscaped(query, text.substr(at, bare));
        return bare;
    }
    const Sequence sequence = readSequence(text, at);
    if (sequence.length != 0) {
        appendEscaped(query, {sequence.bytes.data(), sequence.size});
        return sequence.length;
    }
    const std::size_t length = readByte(text, at).length;
    query.append(text, at, length);
    return length;
}

} // namespace

QueryItem itemAt(std::string_view query, std::size_t begin)
{
    const std::string_view text = query.substr(begin, query.find('&', begin) - begin);
    const std::size_t equals = text.find('=');
    QueryItem item{text.substr(0, equals), std::nullopt, findCoded(text, 0) == text.size()};
    if (equals != std::string_view::npos)
        item.value = text.substr(equals + 1);
    return item;
}

std::optional<std::string> percentDecoded(std::string_view text)
{
    std::string result;
    result.reserve(text.size());
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t escape = std::min(text.find('%', at), text.size());
        result.append(text, at, escape - at);
        at = escape;
        if (at < text.size()) {
            const WrittenByte byte = readByte(text, at);
            result.push_back(byte.value);
            at += byte.length;
        }
    }
    if (!utf8::isWellFormed(result))
        return std::nullopt;
    return result;
}

void appendQueryText(std::string &query, std::string_view text)
{
    const std::size_t begin = query.size();
    // Behind a "%" that begins no escape two hexadecimal digits would make it one.
    std::size_t looseEnd = 0;
    bool undone = false;
    for (std::size_t at = 0; at < text.size();) {
        std::size_t plain = at;
        while (plain < text.size() && characters::is(text[plain], characters::queryText))
            ++plain;
        query.append(text, at, plain - at);
        at = plain;
        if (at == text.size())
            break;
        const WrittenByte byte = readByte(text, at);
        std::size_t length = byte.length;
        if (characters::is(byte.value, characters::nonAscii)) {
            length = appendNonAscii(query, text, at);
        } else if (byte.length == 1 && byte.value == '%') {
            query.push_back('%');
            looseEnd = query.size() + 2;
        } else if (const std::size_t placeholder =
                       byte.value == '{' && length == 1 ? placeholderAt(text, at) : 0;
                   placeholder != 0) {
            query.append(text, at, placeholder);
            length = placeholder;
        } else if (isWrittenPlainly(byte) &&
                   (query.size() >= looseEnd || !characters::is(byte.value, characters::hex))) {
            query.push_back(byte.value);
            undone = true;
        } else {
            appendEscaped(query, {&byte.value, 1});
        }
        at += length;
    }
    if (undone)
        escapeInnerSchemes(query, begin);
}

void escapeLast(std::string &query)
{
    const char last = query.back();
    query.pop_back();
    appendEscaped(query, {&last, 1});
}

void escapeOpenBrackets(std::string &query, std::size_t begin)
{
    std::size_t open = 0;
    bool balanced = true;
    for (std::size_t at = begin; at < query.size(); ++at) {
        if (query[at] == '(')
            ++open;
        else if (query[at] == ')')
            balanced = balanced && open-- > 0;
    }
    if (balanced && open == 0)
        return;
    const std::string text = query.substr(begin);
    query.resize(begin);
    for (const char c : text) {
        if (c == '(' || c == ')')
            appendEscaped(query, {&c, 1});
        else
            query.push_back(c);
    }
}

void keepEscaped(std::string &query, std::size_t begin, std::string_view text, char mark)
{
    const auto value = static_cast<unsigned char>(mark);
    const std::array<char, 3> escape = {'%', hexDigits[value >> 4], hexDigits[value & 0x0FU]};
    const auto isSame = [](char left, char right) {
        return characters::lower(left) == characters::lower(right);
    };
    if (std::search(text.begin(), text.end(), escape.begin(), escape.end(), isSame) == text.end())
        return;
    const std::string written = query.substr(begin);
    query.resize(begin);
    for (const char c : written) {
        if (c == mark)
            query.append(escape.data(), escape.size());
        else
            query.push_back(c);
    }
}

} // namespace velmora
