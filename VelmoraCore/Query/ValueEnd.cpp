#include <VelmoraCore/Query/ValueEnd.h>
#include <VelmoraCore/Text/CharacterClasses.h>

#include <algorithm>

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

// "[2]" at the end of the value.
bool isNote(std::string_view rest)
{
    return rest.size() > 2 && rest.back() == ']' &&
           rest.find_first_not_of("0123456789", 1) == rest.size() - 1;
}

// Where the last run of the mark begins that stands before the link, as in "_link_s".
std::size_t beforeLastMark(std::string_view value)
{
    std::size_t end = value.rfind('_');
    while (end != std::string_view::npos && end > 0 && value[end - 1] == '_')
        --end;
    return std::min(end, value.size());
}

bool endsValue(std::string_view rest, bool isKeyed)
{
    switch (rest.front()) {
    case ',':
    case '|':
        return true;
    case ';':
        return isKeyed || !beginsParameter(rest.substr(1));
    case '*':
        return rest.starts_with("*/");
    case '[':
        return isNote(rest);
    default:
        return false;
    }
}

} // namespace

std::size_t certainValueEnd(std::string_view text, std::size_t link, std::size_t value, std::size_t end)
{
    const char before = link == 0 ? '\0' : text[link - 1];
    const std::string_view all = text.substr(value, end - value);
    std::size_t length = 0;
    while (length < all.size() && !endsValue(all.substr(length), before == '='))
        ++length;
    if (before == '_' && (end == text.size() || text[end] != '_'))
        length = std::min(length, beforeLastMark(all));
    const bool isCut = length < all.size();
    const bool closesTag = !isCut && end < text.size() && text[end] == '>' && before != '<';
    const std::string_view signs = closesTag ? "*~^$@%-=/" : "*~^$@%";
    while (length > 0 &&
           (isOneOf(all[length - 1], signs) || (isCut && characters::is(all[length - 1], characters::soft))))
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

} // namespace velmora
