#include <VelmoraCore/Detection/LinkSurroundings.h>
#include <VelmoraCore/Text/CharacterClasses.h>

#include <algorithm>

namespace velmora {

namespace {

constexpr std::size_t longestKey = 64;

bool isOneOf(char c, std::string_view members)
{
    return members.find(c) != std::string_view::npos;
}

bool isWordCharacter(char c)
{
    return characters::is(c, characters::letter | characters::digit);
}

void findMark(LinkSurroundings &around, std::string_view before)
{
    if (before.empty() || !isOneOf(before.back(), "*_~=+^$"))
        return;
    const char mark = before.back();
    const std::size_t other = before.find_last_not_of(mark);
    const std::size_t length = before.size() - (other == std::string_view::npos ? 0 : other + 1);
    // "key=link" and "a+link" hold no pair of marks.
    const bool standsAlone = length == before.size() || !isWordCharacter(before[before.size() - length - 1]);
    if (length == 1 && !isOneOf(mark, "*_~") && !standsAlone)
        return;
    around.mark = mark;
    around.markLength = length;
}

// Whether a semicolon ends a character reference, "&quot;", and separates nothing.
bool endsReference(std::string_view textToSemicolon)
{
    std::size_t at = textToSemicolon.size();
    while (at > 0 && (isWordCharacter(textToSemicolon[at - 1]) || textToSemicolon[at - 1] == '#'))
        --at;
    return at > 0 && at < textToSemicolon.size() && textToSemicolon[at - 1] == '&';
}

} // namespace

bool LinkSurroundings::closesAt(std::string_view text, std::size_t at, bool isInValue) const
{
    if (text[at] != mark)
        return false;
    if (isOneOf(mark, "*~^"))
        return true; // Runs open together and close one by one.
    if (text[at - 1] == mark)
        return false;
    std::size_t behind = at;
    while (behind < text.size() && text[behind] == mark)
        ++behind;
    if (behind - at < std::min<std::size_t>(markLength, 2))
        return false;
    if (markLength > 1 && mark != '_')
        return true;
    return behind == text.size() || !(characters::is(text[behind], characters::letter | characters::digit) ||
                                      isOneOf(text[behind], isInValue ? "_-&" : "_-=&%.~+"));
}

LinkSurroundings readSurroundings(std::string_view text, std::size_t begin, std::size_t floor)
{
    LinkSurroundings around;
    const std::size_t first = begin - std::min(begin - floor, longestKey);
    std::string_view before = text.substr(first, begin - first);
    findMark(around, before);
    if (before.ends_with('"')) {
        around.isQuoted = true;
        around.isEscapedQuoted = before.ends_with("\\\"");
    }
    while (!before.empty() && characters::is(before.back(), characters::key))
        before.remove_suffix(1);
    if (before.empty())
        return around;
    const char c = before.back();
    before.remove_suffix(1);
    if (isOneOf(c, "<[{("))
        around.separator = '|'; // As in "<link|title>".
    else if (isOneOf(c, "',|") || (c == ';' && !endsReference(before)))
        around.separator = c;
    return around;
}

} // namespace velmora
