#include <VelmoraCore/Detection/LinkSurroundings.h>
#include <VelmoraCore/Query/TrackedLinkScanner.h>
#include <VelmoraCore/Text/ByteSearch.h>

#include <algorithm>

namespace velmora {

bool TrackedLinkScanner::next()
{
    while (scanner_.next(link_)) {
        if (!link_.mayBeCleaned())
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
    query_->rewrite(output, visitor);
}

// Cleans the link and its neighbours, and looks whether that leaves anything to remove.
void TrackedLinkScanner::judgeNeighbours(FoundLink link)
{
    const std::size_t before = std::min(link.begin - link.previousEnd, surroundingsSize);
    std::string cleaned(text_.substr(link.begin - before, before));
    std::size_t copied = link.begin;
    judgedEnd_ = link.end;
    LinkScanner ahead = scanner_;
    do {
        if (link.mayBeCleaned()) {
            const LinkQuery query(rules_, text_, extent_, link);
            if (query.isTracked()) {
                cleaned.append(text_, copied, link.begin - copied);
                query.rewrite(cleaned, nullptr);
                copied = link.end;
            }
            if (query.mayMoveEnds())
                judgedEnd_ = std::max(judgedEnd_, LinkQuery::endOfNeighbours(text_, link.end));
        }
        judgedEnd_ = std::max(judgedEnd_, link.end);
    } while (ahead.next(link) && link.begin < judgedEnd_);
    cleaned.append(text_, copied, judgedEnd_ - copied);
    const std::size_t end = cleaned.size();
    cleaned.append(text_, judgedEnd_, surroundingsSize);
    if (hasTrackedLink(cleaned, before, end))
        keptEnd_ = judgedEnd_;
}

bool TrackedLinkScanner::hasTrackedLink(std::string_view text, std::size_t begin, std::size_t end) const
{
    LinkScanner scanner(text, begin, end);
    for (FoundLink link; scanner.next(link);) {
        if (link.mayBeCleaned() && LinkQuery(rules_, text, TextExtent::piece, link).isTracked())
            return true;
    }
    return false;
}

} // namespace velmora
