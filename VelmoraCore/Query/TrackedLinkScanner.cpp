#include <VelmoraCore/Query/TrackedLinkScanner.h>
#include <VelmoraCore/Text/ByteSearch.h>

#include <algorithm>

namespace velmora {

namespace {

constexpr std::string_view suppliedScheme = "http://";

// How much of the text before and behind neighbours is looked at with them. It says where links end, and whether
// a link is put together with what follows.
constexpr std::size_t context = 64;

bool mayBeTracked(const FoundLink &link)
{
    const bool isWeb = link.kind == FoundLink::Kind::web || link.kind == FoundLink::Kind::bareWeb;
    return isWeb && !link.keptAsWritten && link.query != link.fragment;
}

void append(std::string &output, std::string_view text, const FoundLink &link, const LinkQuery &query,
            CleaningVisitor *visitor)
{
    if (link.kind == FoundLink::Kind::bareWeb)
        output += suppliedScheme;
    output.append(text, link.begin, link.query - link.begin);
    query.rewrite(output, visitor);
    output.append(text, link.fragment, link.end - link.fragment);
}

} // namespace

bool TrackedLinkScanner::next()
{
    while (scanner_.next(link_)) {
        if (!mayBeTracked(link_))
            continue;
        const FoundLink found = link_;
        query_.emplace(rules_, text_, extent_, link_);
        if (query_->mayMoveEnds() && found.begin >= judgedEnd_)
            judgeNeighbours(found);
        if (query_->isTracked() && link_.begin >= keptEnd_)
            return true;
    }
    return false;
}

void TrackedLinkScanner::rewrite(std::string &output, CleaningVisitor *visitor) const
{
    append(output, text_, link_, *query_, visitor);
}

// Cleans the link and its neighbours, and looks whether that leaves anything to remove.
void TrackedLinkScanner::judgeNeighbours(FoundLink link)
{
    const std::size_t before = std::min(link.begin - link.previousEnd, context);
    std::string cleaned(text_.substr(link.begin - before, before));
    std::size_t copied = link.begin;
    judgedEnd_ = link.end;
    LinkScanner ahead = scanner_;
    do {
        if (mayBeTracked(link)) {
            const LinkQuery query(rules_, text_, extent_, link);
            if (query.isTracked()) {
                cleaned.append(text_, copied, link.begin - copied);
                append(cleaned, text_, link, query, nullptr);
                copied = link.end;
            }
            if (query.mayMoveEnds())
                judgedEnd_ = std::max(judgedEnd_, LinkQuery::endOfNeighbours(text_, link.end));
        }
        judgedEnd_ = std::max(judgedEnd_, link.end);
    } while (ahead.next(link) && link.begin < judgedEnd_);
    cleaned.append(text_, copied, judgedEnd_ - copied);
    const std::size_t end = cleaned.size();
    cleaned.append(text_, judgedEnd_, context);
    if (hasTrackedLink(cleaned, before, end))
        keptEnd_ = judgedEnd_;
}

bool TrackedLinkScanner::hasTrackedLink(std::string_view text, std::size_t begin, std::size_t end) const
{
    LinkScanner scanner(text, begin, end);
    for (FoundLink link; scanner.next(link);) {
        if (mayBeTracked(link) && LinkQuery(rules_, text, TextExtent::piece, link).isTracked())
            return true;
    }
    return false;
}

} // namespace velmora
