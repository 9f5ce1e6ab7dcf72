#include <VelmoraCore/Query/ValueEnd.h>
#include <VelmoraCore/Text/ByteSearch.h>
#include <VelmoraCore/Text/CharacterClasses.h>

#include <algorithm>
#include <array>

namespace velmora {

namespace {

bool isOneOf(char c, std::string_view members)
{
    return members.find(c) != std::string_view::npos;
}

// ";b=1": the separator of older links, in the hands of servers a part of the value.
bool beginsParameter(std::string_view behind)
{
    std::size_t end = 0;
    while (end < behind.size() && characters::is(behind[end], characters::host | characters::dot))
        ++end;
    return end > 0 && end < behind.size() && behind[end] == '=';
}

// Where the last run of the mark begins that stands before the link, as in "_link_s".
std::size_t beforeLastMark(std::string_view value)
{
    std::size_t end = value.rfind('_');
    while (end != std::string_view::npos && end > 0 && value[end - 1] == '_')
        --end;
    return std::min(end, value.size());
}

// Whether a mark that stands before a word of the same line, not far before the link, has not closed yet.
bool isMarkOpen(std::string_view text, std::size_t link, char mark)
{
    constexpr std::size_t farthest = 256;
    bool isOpen = false;
    for (std::size_t at = link - std::min(link, farthest); at < link; ++at) {
        const bool isMark = text[at] == mark;
        const bool isBehindBlank = at == 0 || isOneOf(text[at - 1], " \t\n\r([{>\"'*~");
        const bool isBeforeBlank = at + 1 == link || isOneOf(text[at + 1], " \t.,;:!?)");
        if (isMark && isBehindBlank)
            isOpen = true;
        else if (text[at] == '\n' || (isMark && isBeforeBlank))
            isOpen = false;
    }
    return isOpen;
}

// Where a bracket stands that is not closed in the value; its end without one.
std::size_t beforeOpenBracket(std::string_view value)
{
    std::size_t open = 0; // Of all kinds alike, closed further back.
    for (std::size_t at = value.size(); at > 0; --at) {
        if (isOneOf(value[at - 1], ")]}"))
            ++open;
        else if (isOneOf(value[at - 1], "([{") && open-- == 0)
            return at - 1;
    }
    return value.size();
}

// Where a macro of wiki text closes that the same line opened, not far before the link: "{quote}link{quote}",
// "{color:red}link{color}". The value's end without one.
std::size_t beforeClosingMacro(std::string_view text, std::size_t link, std::string_view value)
{
    constexpr std::size_t farthest = 256;
    const std::size_t open = value.ends_with('}') ? value.rfind('{') : std::string_view::npos;
    if (open == std::string_view::npos || open + 2 >= value.size())
        return value.size();
    const std::string_view name = value.substr(open, value.size() - 1 - open);
    std::string_view before = text.substr(link - std::min(link, farthest), std::min(link, farthest));
    before.remove_prefix(before.rfind('\n') + 1); // Behind "nowhere" is the beginning.
    for (std::size_t at = before.find(name); at != std::string_view::npos; at = before.find(name, at + 1)) {
        const std::string_view behind = before.substr(at + name.size());
        if (behind.starts_with('}') || behind.starts_with(':'))
            return open;
    }
    return value.size();
}

// Where line and column begin that a stack trace puts behind the link, as in "at f (link:12:3)".
std::size_t beforePosition(std::string_view textBefore, std::string_view value)
{
    if (!textBefore.ends_with('(') && !textBefore.ends_with('@') && !textBefore.ends_with("at "))
        return value.size();
    std::size_t position = value.size();
    for (std::size_t end = value.size(); end > 0;) {
        const std::size_t colon = value.find_last_not_of("0123456789", end - 1);
        if (colon == std::string_view::npos || colon + 1 == end || value[colon] != ':')
            break;
        position = end = colon;
    }
    return position;
}

// What closes an escaped quote or parenthesis that stands directly before the link, as in "%22link%22"; empty without
// one. Behind the letter of another escape, as in "%3C", no link begins.
std::string_view closingEscape(std::string_view textBefore)
{
    if (textBefore.ends_with("%22"))
        return "%22";
    if (textBefore.ends_with("%27"))
        return "%27";
    return textBefore.ends_with("%28") ? "%29" : std::string_view();
}

// Whether the text is this link and nothing else, as copied from an address bar.
bool isWholeText(std::string_view text, std::size_t link, std::size_t end)
{
    constexpr std::string_view blanks = " \t\r\n";
    // The end first: only one link of a text goes on to the look at the beginning.
    return text.find_first_not_of(blanks, end) == std::string_view::npos &&
           text.find_first_not_of(blanks) == link;
}

// What ends a value wherever it stands: separators of columns and lists, the end of a comment, what a sentence
// ends in and no value does.
constexpr auto endings = std::to_array<std::string_view>({",", "|", "*/", "...", "!!", "!?", "?!", "??"});

// Whether the value ends before `rest`, the first byte of which is doubtful.
bool endsValue(std::string_view rest, bool isFirst, bool isKeyed)
{
    if (rest.front() == '(')
        return !isFirst;
    if (rest.front() == ';')
        return isKeyed || !beginsParameter(rest.substr(1));
    return std::any_of(endings.begin(), endings.end(),
                       [rest](std::string_view ending) { return rest.starts_with(ending); });
}

// Whether nothing in the value can be the text's: letters and digits, with "-" and "_" between them.
bool isWord(std::string_view text, std::size_t value, std::size_t end)
{
    const WordMarks marks = wordMarks(text, value);
    const std::size_t length = end - value;
    return length > 0 && length <= marks.length && marks.dots << (WordMarks::reach - length) == 0 &&
           characters::is(text[end - 1], characters::letter | characters::digit);
}

} // namespace

std::size_t certainValueEnd(std::string_view text, TextExtent extent, std::size_t link, std::size_t value,
                            std::size_t end)
{
    const char before = link == 0 ? '\0' : text[link - 1];
    const std::string_view all = text.substr(value, end - value);
    if ((before != '_' && isWord(text, value, end)) ||
        (extent == TextExtent::whole && isWholeText(text, link, end)))
        return end;
    std::size_t length = 0;
    while (length < all.size() && !(characters::is(all[length], characters::doubtful) &&
                                    endsValue(all.substr(length), length == 0, before == '=')))
        ++length;
    if (const std::string_view closing = closingEscape(text.substr(0, link)); !closing.empty())
        length = std::min(length, all.find(closing));
    if (before == '_' && (end == text.size() || text[end] != '_'))
        length = std::min(length, beforeLastMark(all));
    length =
        std::min({length, beforeClosingMacro(text, link, all), beforePosition(text.substr(0, link), all)});
    const bool isCut = length < all.size();
    if (isCut) // As in "file.{c,h}".
        length = beforeOpenBracket(all.substr(0, length));
    const bool closesTag = !isCut && end < text.size() && text[end] == '>' && before != '<';
    const bool closesMark = all.ends_with('_') && isMarkOpen(text, link, '_');
    const std::string_view signs = closesTag ? "*~^$@%-=/" : closesMark ? "_*~^$@%" : "*~^$@%";
    const char pair = before == '/' || before == '-' ? before : signs.front(); // As in "/link/".
    while (length > 0 && (isOneOf(all[length - 1], signs) || all[length - 1] == pair ||
                          (isCut && characters::is(all[length - 1], characters::soft))))
        --length;
    return value + length;
}

bool isConcatenated(std::string_view text, std::size_t end)
{
    if (end >= text.size() || !isOneOf(text[end], "\"'`"))
        return false;
    const std::size_t behind = text.find_first_not_of(" \t", end + 1);
    if (behind == std::string_view::npos)
        return false;
    const std::string_view rest = text.substr(behind);
    if (rest.front() == '.')
        return rest.size() > 1 &&
               (rest[1] == '$' || rest.starts_with(". $") || characters::is(rest[1], characters::letter));
    return rest.front() == '+' || rest.front() == '&' || rest.starts_with("||") || rest.starts_with("<<");
}

bool breaksQuotedPrintableLine(std::string_view text, std::size_t query, std::size_t end)
{
    const bool isLineEnd = end == text.size() || text[end] == '\n' || text[end] == '\r';
    if (!isLineEnd || text[end - 1] != '=')
        return false;
    // Searched by its second byte: a value may be full of "=".
    const std::string_view written = text.substr(0, end);
    std::size_t escape = written.find("3D", query + 1);
    while (escape != std::string_view::npos && written[escape - 1] != '=')
        escape = written.find("3D", escape + 1);
    return escape != std::string_view::npos;
}

} // namespace velmora
