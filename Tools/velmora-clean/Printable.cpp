#include "Printable.h"

#include <VelmoraCore/Text/Utf8.h>

#include <array>
#include <cstdio>

namespace {

bool isControl(char32_t c)
{
    return c < 0x20 || (c >= 0x7F && c <= 0x9F);
}

// Marks, embeddings, overrides and isolates of the bidirectional algorithm; separators of lines and
// paragraphs.
bool turnsOrBreaksLines(char32_t c)
{
    return c == 0x061C || c == 0x200E || c == 0x200F || (c >= 0x2028 && c <= 0x202E) ||
           (c >= 0x2066 && c <= 0x2069);
}

void appendEscape(std::string &text, const char *format, unsigned value)
{
    std::array<char, 16> escape{};
    static_cast<void>(std::snprintf(escape.data(), escape.size(), format, // NOLINT(*-nonliteral)
                                    value));
    text += escape.data();
}

} // namespace

std::string printable(std::string_view text)
{
    std::string result;
    for (std::size_t at = 0; at < text.size();) {
        const velmora::utf8::CodePoint point = velmora::utf8::decode(text, at);
        if (point.value == velmora::utf8::illFormed || point.value < 0x20 || point.value == 0x7F)
            appendEscape(result, "\\x%02x", velmora::utf8::byteAt(text, at));
        else if (isControl(point.value) || turnsOrBreaksLines(point.value))
            appendEscape(result, "\\u%04x", static_cast<unsigned>(point.value));
        else
            result += text.substr(at, point.length);
        at += point.length;
    }
    return result;
}
