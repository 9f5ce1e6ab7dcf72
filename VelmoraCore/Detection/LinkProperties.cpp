#include <VelmoraCore/Detection/LinkProperties.h>
#include <VelmoraCore/Detection/LinkPropertyTables.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <iterator>

namespace velmora {

namespace {

// For each page of 256 code points the run that holds its first one, so that a look-up searches one page.
class LinkTermPages {
public:
    LinkTermPages()
    {
        std::uint16_t run = 0;
        for (std::size_t page = 0; page < firstRun_.size(); ++page) {
            while (run + 1U < tables::linkTermRuns.size() && tables::linkTermRuns[run + 1].first <= page << 8)
                ++run;
            firstRun_[page] = run;
        }
    }

    LinkTerm valueOf(char32_t point) const
    {
        const std::size_t page = point >> 8;
        const std::size_t first = firstRun_[page];
        const std::size_t last =
            page + 1 < firstRun_.size() ? firstRun_[page + 1] + 1U : tables::linkTermRuns.size();
        const auto runs = tables::linkTermRuns.subspan(first, last - first);
        const auto startsAfter = [](char32_t value, const tables::LinkTermRun &run) {
            return value < run.first;
        };
        return std::prev(std::upper_bound(runs.begin(), runs.end(), point, startsAfter))->value;
    }

private:
    std::array<std::uint16_t, 0x1100> firstRun_{};
};

} // namespace

LinkTerm linkTerm(char32_t point)
{
    static const LinkTermPages pages;
    return point > 0x10FFFF ? LinkTerm::hard : pages.valueOf(point);
}

char32_t linkBracket(char32_t close)
{
    const auto pairs = tables::linkBracketPairs;
    const auto isBefore = [](const tables::LinkBracketPair &pair, char32_t value) {
        return pair.close < value;
    };
    const auto pair = std::lower_bound(pairs.begin(), pairs.end(), close, isBefore);
    return pair != pairs.end() && pair->close == close ? pair->open : 0;
}

bool linkEmail(char32_t point)
{
    if (point > 0x10FFFF)
        return false;
    const auto changes = tables::linkEmailChanges;
    return (std::upper_bound(changes.begin(), changes.end(), point) - changes.begin()) % 2 == 0;
}

} // namespace velmora
