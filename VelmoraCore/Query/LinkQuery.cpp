#include <VelmoraCore/Detection/LinkSurroundings.h>
#include <VelmoraCore/Query/LinkQuery.h>
#include <VelmoraCore/Query/QueryItemReader.h>
#include <VelmoraCore/Text/ByteSearch.h>
#include <VelmoraCore/Text/CharacterClasses.h>

#include <algorithm>

namespace velmora {

namespace {

// How much behind a link is looked at for what may become part of it.
constexpr std::size_t neighbourhoodSize = 1024;

// A value that source text fills in, told apart from others by its place alone.
bool isFilledByPlace(std::string_view value)
{
    constexpr std::string_view conversions = "sdiuvfxq@";
    return value == "{}" || (value.size() == 2 && value.front() == '%' &&
                             conversions.find(value.back()) != std::string_view::npos);
}

bool isWordCharacter(char c)
{
    return characters::is(c, characters::letter | characters::digit | characters::nonAscii);
}

} // namespace

LinkQuery::LinkQuery(const TrackingRules &rules, std::string_view text, TextExtent extent, FoundLink &link)
    : rules_(rules)
    , text_(text)
    , extent_(extent)
    , link_(link)
    , foundEnd_(link.end)
    , query_(cleaner())
    , isTracked_(decide())
{
}

QueryCleaner LinkQuery::cleaner() const
{
    return {rules_, text_.substr(link_.query + 1, link_.fragment - link_.query - 1),
            text_.substr(link_.hostBegin, link_.hostEnd - link_.hostBegin)};
}

bool LinkQuery::decide()
{
    if (!query_.isTracked() || isFormat() || breaksQuotedPrintableLine(text_, link_.query, link_.end) ||
        !leaveToText())
        return false;
    const bool isJoinable = hasNeighbours();
    mayMoveEnds_ = isJoinable || holdsLink();
    return !isJoinable || !wouldJoin();
}

// Whether the link is quoted source text in which a removed value is filled in by its place, as in
// "?utm_source=%s&id=%d": without it the others would get the wrong values.
bool LinkQuery::isFormat() const
{
    constexpr std::string_view quotes = "\"'`";
    if (link_.begin == 0 || quotes.find(text_[link_.begin - 1]) == std::string_view::npos)
        return false;
    const std::string_view query = text_.substr(link_.query + 1, link_.fragment - link_.query - 1);
    if (query.find_first_of("%{") == std::string_view::npos)
        return false;
    const LinkHost host(text_.substr(link_.hostBegin, link_.hostEnd - link_.hostBegin));
    QueryItemReader reader(query);
    for (QueryItem item; reader.next(item);) {
        if (item.value && isFilledByPlace(*item.value) && rules_.removes(item, host))
            return true;
    }
    return false;
}

// Shortens the link. False when the link has to stay whole.
bool LinkQuery::leaveToText()
{
    const auto [last, isRemoved] = query_.last();
    if (!isRemoved || !last.value)
        return true;
    const auto value = static_cast<std::size_t>(last.value->data() - text_.data());
    if (value == link_.end && isConcatenated(text_, link_.end))
        return false;
    const std::size_t end = certainValueEnd(text_, extent_, link_.begin, value, link_.fragment);
    if (end == link_.fragment)
        return true;
    link_.end = link_.fragment = end;
    query_ = cleaner();
    return query_.isTracked();
}

// Its "=" is written as an escape when it stands in a value, and no longer says that the link belongs to it.
bool LinkQuery::holdsLink() const
{
    return text_.substr(link_.query, link_.fragment - link_.query).find("://") != std::string_view::npos;
}

std::size_t LinkQuery::endOfNeighbours(std::string_view text, std::size_t linkEnd)
{
    return findBlank(text.substr(0, std::min(text.size(), linkEnd + neighbourhoodSize)), linkEnd);
}

// Whether what follows directly may become part of the link, and a parameter with it.
bool LinkQuery::hasNeighbours() const
{
    if (link_.fragment != link_.end || link_.end == text_.size())
        return false;
    const char next = text_[link_.end];
    if (characters::is(next, characters::blank))
        return false;
    if (next == '"' && (link_.end + 1 == text_.size() || !isWordCharacter(text_[link_.end + 1])))
        return false;
    const std::string_view tail = text_.substr(link_.end, endOfNeighbours(text_, link_.end) - link_.end);
    return tail.find_first_of("?&") != std::string_view::npos;
}

// Whether the text behind the link would become part of it, and a parameter with it that is no link's now.
bool LinkQuery::wouldJoin() const
{
    const std::string_view tail = text_.substr(link_.end, endOfNeighbours(text_, link_.end) - link_.end);
    const std::size_t before = std::min(link_.begin - link_.previousEnd, surroundingsSize);
    std::string joined(text_.substr(link_.begin - before, before));
    rewrite(joined, nullptr);
    const std::size_t end = joined.size();
    joined += tail;
    LinkScanner scanner(joined, before, joined.size());
    FoundLink link;
    if (!scanner.next(link) || link.end <= end || !link.mayBeCleaned())
        return false;
    if (link.query >= end && isCleanedByItself(link_.end + link.query - end))
        return false;
    const std::string_view all = joined;
    return QueryCleaner(rules_, all.substr(link.query + 1, link.fragment - link.query - 1),
                        all.substr(link.hostBegin, link.hostEnd - link.hostBegin))
        .isTracked();
}

// Whether the query that begins at this place behind the link is that of the next link.
bool LinkQuery::isCleanedByItself(std::size_t query) const
{
    if (query < foundEnd_)
        return false;
    LinkScanner scanner(text_, foundEnd_, endOfNeighbours(text_, query));
    FoundLink next;
    return scanner.next(next) && next.query == query && next.mayBeCleaned() &&
           !rules_.ignores(LinkHost(text_.substr(next.hostBegin, next.hostEnd - next.hostBegin)));
}

void LinkQuery::rewrite(std::string &output, CleaningVisitor *visitor) const
{
    const LinkSurroundings around = surroundingsBefore(text_, link_.begin, link_.previousEnd);
    output += link_.suppliedScheme();
    output.append(text_, link_.begin, link_.query - link_.begin);
    query_.rewrite(output, {endsLink(), {around.separator, around.mark}}, visitor);
    output.append(text_, link_.fragment, link_.end - link_.fragment);
}

} // namespace velmora
