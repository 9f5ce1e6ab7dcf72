#include <VelmoraCore/ByteSearch.h>
#include <VelmoraCore/CharacterClasses.h>
#include <VelmoraCore/QueryItem.h>
#include <VelmoraCore/Utf8.h>

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

void appendEscaped(std::string &query, char byte)
{
    const auto value = static_cast<unsigned char>(byte);
    const std::array<char, 3> escape = {'%', hexDigits[value >> 4], hexDigits[value & 0x0FU]};
    query.append(escape.data(), escape.size());
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

// How many written characters the well-formed multi-byte sequence at `at` takes; 0 if there is none.
std::size_t sequenceLength(std::string_view text, std::size_t at)
{
    const utf8::CodePoint bare = utf8::decode(text, at);
    if (bare.value >= 0x80 && bare.value != utf8::illFormed)
        return bare.length;
    std::array<char, 4> bytes{};
    std::array<std::size_t, 4> ends{};
    std::size_t count = 0;
    for (std::size_t i = at; i < text.size() && count < bytes.size(); ++count) {
        const WrittenByte byte = readByte(text, i);
        i += byte.length;
        bytes[count] = byte.value;
        ends[count] = i - at;
    }
    const utf8::CodePoint point = utf8::decode(std::string_view(bytes.data(), count), 0);
    return point.value == utf8::illFormed ? 0 : ends[point.length - 1];
}

// A plus sign means a blank to many servers when it stands there bare.
bool isWrittenPlainly(char decoded)
{
    return characters::is(decoded, characters::queryText) && decoded != '+';
}

void appendSequence(std::string &query, std::string_view written)
{
    for (std::size_t at = 0; at < written.size();) {
        const WrittenByte byte = readByte(written, at);
        appendEscaped(query, byte.value);
        at += byte.length;
    }
}

} // namespace

QueryItemReader::QueryItemReader(std::string_view query)
    : query_(query)
    , coded_(findCoded(query, 0))
    , atEnd_(query.empty())
{
}

bool QueryItemReader::next(QueryItem &item)
{
    if (atEnd_)
        return false;
    const std::size_t begin = position_;
    std::size_t end = findSeparator(query_, begin);
    item.name = query_.substr(begin, end - begin);
    item.value.reset();
    if (end < query_.size() && query_[end] == '=') {
        const std::size_t value = end + 1;
        end = std::min(query_.find('&', value), query_.size());
        item.value = query_.substr(value, end - value);
    }
    item.plain = coded_ >= end;
    if (!item.plain)
        coded_ = findCoded(query_, end);
    atEnd_ = end == query_.size();
    position_ = end + 1;
    return true;
}

std::optional<std::string> percentDecoded(std::string_view text)
{
    std::size_t at = findCoded(text, 0);
    std::string result(text, 0, at);
    if (at == text.size())
        return result;
    result.reserve(text.size());
    while (at < text.size()) {
        const WrittenByte byte = readByte(text, at);
        result.push_back(byte.value);
        at += byte.length;
    }
    if (!utf8::isWellFormed(result))
        return std::nullopt;
    return result;
}

void appendQueryText(std::string &query, std::string_view text)
{
    // Behind a "%" that begins no escape two hexadecimal digits would make it one.
    std::size_t looseEnd = 0;
    for (std::size_t at = 0; at < text.size();) {
        std::size_t plain = at;
        while (plain < text.size() && characters::is(text[plain], characters::queryText))
            ++plain;
        query.append(text, at, plain - at);
        at = plain;
        if (at == text.size())
            return;
        const WrittenByte byte = readByte(text, at);
        std::size_t length = byte.length;
        if (characters::is(byte.value, characters::nonAscii)) {
            length = sequenceLength(text, at);
            if (length != 0) {
                appendSequence(query, text.substr(at, length));
            } else {
                length = byte.length;
                query.append(text, at, length);
            }
        } else if (byte.length == 1 && byte.value == '%') {
            query.push_back('%');
            looseEnd = query.size() + 2;
        } else if (isWrittenPlainly(byte.value) &&
                   (query.size() >= looseEnd || !characters::is(byte.value, characters::hex))) {
            query.push_back(byte.value);
        } else {
            appendEscaped(query, byte.value);
        }
        at += length;
    }
}

} // namespace velmora
