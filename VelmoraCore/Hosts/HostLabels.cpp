#include <VelmoraCore/Hosts/HostLabels.h>
#include <VelmoraCore/Hosts/TopLevelDomains.h>
#include <VelmoraCore/Text/ByteSearch.h>
#include <VelmoraCore/Text/CharacterClasses.h>
#include <VelmoraCore/Text/CharacterProperties.h>
#include <VelmoraCore/Text/Scripts.h>
#include <VelmoraCore/Text/Utf8.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <optional>

namespace velmora {

namespace {

// Top-level domains that are commoner at the end of a file's name than at the end of a host's.
constexpr std::array<std::string_view, 17> fileEndings = {"am", "cab", "cc", "la",  "md",        "mk",
                                                          "ml", "mov", "pm", "ps",  "pub",       "py",
                                                          "rs", "sh",  "so", "zip", "properties"};

struct Labels {
    std::size_t count = 0;
    std::string_view first;
    std::string_view last;
    bool valid = true;
};

void append(Labels &labels, std::string_view label)
{
    labels.valid = labels.valid && !label.empty() && label.front() != '-' && label.back() != '-';
    if (labels.count++ == 0)
        labels.first = label;
    labels.last = label;
}

// Of an invalid host only that it is one.
Labels labelsOf(std::string_view host)
{
    Labels labels;
    std::size_t begin = 0;
    for (std::size_t at = 0; at < host.size() && labels.valid;) {
        std::size_t length = 1;
        bool isDot = host[at] == '.';
        if (characters::is(host[at], characters::nonAscii)) {
            const utf8::CodePoint point = utf8::decode(host, at);
            length = point.length;
            isDot = isIdeographicDot(point.value);
        }
        if (isDot) {
            append(labels, host.substr(begin, at - begin));
            begin = at + length;
        }
        at += length;
    }
    append(labels, host.substr(begin));
    return labels;
}

bool isEscape(std::string_view text, std::size_t at)
{
    return text[at] == '%' && at + 2 < text.size() && characters::is(text[at + 1], characters::hex) &&
           characters::is(text[at + 2], characters::hex);
}

std::size_t trimmedEnd(std::string_view text, std::size_t begin, std::size_t end)
{
    while (end > begin && !characters::is(text[end - 1], characters::letter | characters::digit)) {
        const utf8::CodePoint last = utf8::decodeBefore(text, end, begin);
        if (last.value != '.' && last.value != '-' && last.value != '_' && !isIdeographicDot(last.value))
            break;
        end -= last.length;
    }
    return end;
}

bool isAlphabetic(std::string_view label)
{
    return std::all_of(label.begin(), label.end(),
                       [](char c) { return characters::is(c, characters::letter); });
}

// A host of ASCII characters without escapes; nothing if it goes on with something else, or is longer than any
// that is in use.
std::optional<HostExtent> asciiHostExtent(std::string_view text, std::size_t begin)
{
    const WordMarks marks = wordMarks(text, begin);
    std::size_t end = begin + marks.length;
    if (marks.length == WordMarks::reach ||
        (end < text.size() && (text[end] == '%' || characters::is(text[end], characters::nonAscii))))
        return std::nullopt;
    while (end > begin && text[end - 1] == '.')
        --end;
    if (end == begin)
        return HostExtent{end, false};
    const std::uint64_t last = std::uint64_t{1} << (end - begin - 1);
    const std::uint64_t labelBegins = marks.dots << 1 | 1;
    const std::uint64_t labelEnds = marks.dots >> 1 | last;
    const std::uint64_t edges = (labelBegins | labelEnds) & (last | (last - 1));
    return HostExtent{end, ((marks.dots | marks.hyphens) & edges) == 0};
}

// Symbols and emoji. Some hosts begin with them, but no top-level domain holds one.
bool isSymbol(char32_t point)
{
    const CharacterProperties &character = propertiesOf(point);
    return character.category == CharacterCategory::symbol || character.isPictographic;
}

// Where the first symbol of the last label stands; the end of the host without one.
std::size_t symbolOfLastLabel(std::string_view host)
{
    const std::size_t dot = host.rfind('.');
    for (std::size_t at = dot == std::string_view::npos ? 0 : dot + 1; at < host.size();) {
        const utf8::CodePoint point = utf8::decode(host, at);
        if (point.length > 1 && isSymbol(point.value))
            return at;
        at += point.length;
    }
    return host.size();
}

// Where the ASCII part begins in which the first label ends, if prose without blanks or a symbol stands
// before it; otherwise where the label begins.
std::size_t behindProse(std::string_view label)
{
    std::size_t begin = label.size();
    while (begin > 0 && !characters::is(label[begin - 1], characters::nonAscii))
        --begin;
    if (begin == 0 || begin == label.size() || label[begin] == '-')
        return 0;
    const char32_t before = utf8::decodeBefore(label, begin, 0).value;
    return isOfScriptWithoutBlanks(before) || isSymbol(before) ? begin : 0;
}

// Walks over the characters of a host, escapes and full stops of East Asian scripts included; those are dots
// only where the host has no other.
struct HostWalk {
    std::string_view text;
    std::size_t end;          // Behind what was walked over.
    std::size_t fullStop = 0; // The first one.
    bool asciiDot = false;

    // False when the host ends here; not at the end of the text.
    bool step()
    {
        const char c = text[end];
        if (characters::is(c, characters::nonAscii))
            return stepNonAscii();
        const bool escape = isEscape(text, end);
        if (!escape && !characters::is(c, characters::host | characters::dot))
            return false;
        asciiDot = asciiDot || c == '.';
        end += escape ? 3 : 1;
        return true;
    }

private:
    bool stepNonAscii()
    {
        const utf8::CodePoint point = utf8::decode(text, end);
        const bool isDot = isIdeographicDot(point.value);
        if (isDot ? asciiDot : !isHostCodePoint(point.value) && !isSymbol(point.value))
            return false;
        if (isDot && fullStop == 0)
            fullStop = end;
        end += point.length;
        return true;
    }
};

} // namespace

bool isHostCodePoint(char32_t point)
{
    const CharacterProperties &character = propertiesOf(point);
    if ((character.category != CharacterCategory::other && character.category != CharacterCategory::symbol) ||
        character.isPictographic)
        return true;
    switch (point) { // The joiners and the marks beside letters that internationalised names may hold.
    case 0xB7:
    case 0x375:
    case 0x5F3:
    case 0x5F4:
    case 0x6FD:
    case 0x6FE:
    case 0xF0B:
    case 0x200C:
    case 0x200D:
    case 0x30FB:
    case 0xFF0D:
        return true;
    default:
        return false;
    }
}

bool isIdeographicDot(char32_t point)
{
    return point == 0x3002 || point == 0xFF0E || point == 0xFF61;
}

HostExtent hostExtent(std::string_view text, std::size_t begin)
{
    if (const auto extent = asciiHostExtent(text, begin))
        return *extent;
    HostWalk walk{text, begin};
    while (walk.end < text.size() && walk.step()) {
    }
    std::size_t end = walk.end;
    // A full stop that leads to no known domain ends the sentence, not a label.
    if (walk.fullStop != 0 &&
        (walk.asciiDot || !isTopLevelDomain(labelsOf(text.substr(begin, end - begin)).last)))
        end = walk.fullStop;
    end = begin + symbolOfLastLabel(text.substr(begin, end - begin));
    while (end > begin && text[end - 1] == '.')
        --end;
    return {end, end > begin && labelsOf(text.substr(begin, end - begin)).valid};
}

BareHost bareHost(std::string_view text, std::size_t runBegin, std::size_t runEnd)
{
    BareHost host{runBegin, trimmedEnd(text, runBegin, runEnd), false, false};
    while (host.begin < host.end && (text[host.begin] == '-' || text[host.begin] == '_'))
        ++host.begin;
    Labels labels = labelsOf(text.substr(host.begin, host.end - host.begin));
    if (!labels.valid || labels.count < 2)
        return host;
    const std::size_t prose = behindProse(labels.first);
    host.begin += prose;
    labels.first.remove_prefix(prose);
    const bool isWww = labels.count > 2 && characters::equalsIgnoringCase(labels.first, "www");
    host.valid = (isWww && isAlphabetic(labels.last)) || isTopLevelDomain(labels.last);
    const auto isEnding = [&labels](std::string_view ending) {
        return characters::equalsIgnoringCase(labels.last, ending);
    };
    host.looksLikeFile =
        host.valid && labels.count == 2 && std::any_of(fileEndings.begin(), fileEndings.end(), isEnding);
    return host;
}

} // namespace velmora
