#include <VelmoraCore/Detection/LinkScanner.h>
#include <VelmoraCore/LinkCleaner.h>
#include <VelmoraCore/Query/QueryCleaner.h>
#include <VelmoraCore/Rules/TrackingRules.h>
#include <VelmoraCore/Text/ByteSearch.h>
#include <VelmoraCore/Text/CharacterClasses.h>
#include <VelmoraCore/UrlComponents.h>

#include <algorithm>
#include <optional>
#include <utility>

namespace velmora {

namespace {

constexpr std::string_view suppliedScheme = "http://";

// Finds the links of a text that have something to remove.
//
// Only a link with a query can change, so the text is searched for "?" and only the words around those are
// looked at. A link never reaches beyond a word, which makes this the same as looking at every link.
class TrackedLinks {
public:
    TrackedLinks(std::string_view text, const TrackingRules &rules)
        : text_(text)
        , rules_(rules)
        , scanner_(text, 0, 0)
    {
    }

    // False after the last one.
    bool next()
    {
        while (true) {
            while (scanner_.next(link_)) {
                if (!isWeb() || link_.query == link_.fragment)
                    continue;
                query_.emplace(rules_, text_.substr(link_.query + 1, link_.fragment - link_.query - 1),
                               text_.substr(link_.hostBegin, link_.hostEnd - link_.hostBegin));
                if (query_->isTracked())
                    return true;
            }
            if (!nextWord())
                return false;
        }
    }

    const FoundLink &link() const { return link_; }

    // Appends the text from `begin`, which is not behind the link, to before the link's fragment as it is to
    // be.
    void rewrite(std::size_t begin, std::string &output, std::vector<RemovedQueryItem> &removed) const
    {
        if (link_.kind == FoundLink::Kind::bareWeb) {
            output.append(text_, begin, link_.begin - begin);
            output += suppliedScheme;
            begin = link_.begin;
        }
        output.append(text_, begin, link_.query - begin);
        query_->rewrite(output, removed);
    }

private:
    bool isWeb() const
    {
        return link_.kind == FoundLink::Kind::web || link_.kind == FoundLink::Kind::bareWeb;
    }

    bool nextWord()
    {
        const std::size_t mark = findQueryMark(text_, wordEnd_);
        if (mark == text_.size())
            return false;
        const std::size_t begin = behindLastBlank(text_, wordEnd_, mark);
        wordEnd_ = findBlank(text_, mark + 1);
        scanner_ = LinkScanner(text_, begin, wordEnd_);
        return true;
    }

    std::string_view text_;
    const TrackingRules &rules_;
    LinkScanner scanner_;
    FoundLink link_;
    std::optional<QueryCleaner> query_;
    std::size_t wordEnd_ = 0;
};

// A list is grown in few steps, because each moves all of its items: to what the text behind `done` will need
// if it is like the text before, but not too far at once.
void makeRoom(std::vector<RemovedQueryItem> &items, std::size_t done, std::size_t size)
{
    constexpr std::size_t many = 64;
    constexpr std::size_t step = 8;
    if (items.size() >= many && items.size() + items.size() / step > items.capacity())
        items.reserve(items.size() * std::min(size / done + 1, step));
}

} // namespace

LinkCleaner::LinkCleaner(LinkCleanerConfiguration configuration)
    : configuration_(std::move(configuration))
    , rules_(std::make_shared<TrackingRules>(configuration_))
{
}

LinkCleaningResult LinkCleaner::clean(std::string_view text) const
{
    LinkCleaningResult result{std::string(text), {}, {}};
    std::size_t copied = 0;
    TrackedLinks links(text, *rules_);
    while (links.next()) {
        if (copied == 0)
            result.cleanedText.reserve(text.size() + suppliedScheme.size());
        links.rewrite(copied, result.cleanedText, result.removedItems);
        copied = links.link().fragment;
        makeRoom(result.removedItems, copied, text.size());
    }
    result.cleanedText += text.substr(copied);
    return result;
}

std::vector<LinkEdit> LinkCleaner::edits(std::string_view text) const
{
    std::vector<LinkEdit> edits;
    TrackedLinks links(text, *rules_);
    while (links.next()) {
        const FoundLink &link = links.link();
        LinkEdit &edit = edits.emplace_back(LinkEdit{link.begin, link.end - link.begin, {}, {}});
        edit.replacement.reserve(suppliedScheme.size() + edit.length);
        links.rewrite(link.begin, edit.replacement, edit.removedItems);
        edit.replacement.append(text, link.fragment, link.end - link.fragment);
    }
    return edits;
}

CleanedUrl LinkCleaner::cleanUrl(std::string_view url) const
{
    CleanedUrl result{std::string(url), {}};
    const std::optional<UrlComponents> components = UrlComponents::parse(url);
    if (!components || !components->scheme || !components->query)
        return result;
    const std::string_view scheme = *components->scheme;
    if (!characters::equalsIgnoringCase(scheme, "http") && !characters::equalsIgnoringCase(scheme, "https"))
        return result;
    QueryCleaner query(*rules_, *components->query, components->host.value_or(std::string_view()));
    if (!query.isTracked())
        return result;
    const auto queryBegin = static_cast<std::size_t>(components->query->data() - url.data());
    result.url = url.substr(0, queryBegin - 1);
    query.rewrite(result.url, result.removedItems);
    result.url += url.substr(queryBegin + components->query->size());
    return result;
}

} // namespace velmora
