#include <VelmoraCore/LinkCleaner.h>
#include <VelmoraCore/Query/PlainLink.h>
#include <VelmoraCore/Query/QueryCleaner.h>
#include <VelmoraCore/Query/TrackedLinkScanner.h>
#include <VelmoraCore/Rules/TrackingRules.h>
#include <VelmoraCore/Text/ByteSearch.h>
#include <VelmoraCore/Text/CharacterClasses.h>
#include <VelmoraCore/UrlComponents.h>

#include <algorithm>
#include <optional>
#include <utility>

namespace velmora {

namespace {

// Finds the links of a text that have something to remove.
//
// Only a link with a query can change, so the text is searched for "?" and only the words around those are
// looked at. A link never reaches beyond a word, which makes this the same as looking at every link.
class TrackedLinks {
public:
    TrackedLinks(std::string_view text, TextExtent extent, const TrackingRules &rules)
        : text_(text)
        , rules_(rules)
        , found_(rules, text, extent, 0, 0)
        , plain_(text, extent)
    {
    }

    // False after the last one.
    bool next()
    {
        while (true) {
            if (!isPlain_ && found_.next())
                return true;
            const std::size_t mark = findQueryMark(text_, wordEnd_);
            if (mark == text_.size())
                return false;
            const std::size_t word = behindLastBlank(text_, wordEnd_, mark);
            isPlain_ = plain_.read(word, mark);
            if (isPlain_) {
                wordEnd_ = plain_.end();
                if (plain_.isTracked(rules_))
                    return true;
            } else {
                wordEnd_ = findBlank(text_, mark + 1);
                found_.look(word, wordEnd_);
            }
        }
    }

    std::size_t begin() const { return isPlain_ ? plain_.begin() : found_.begin(); }

    std::size_t end() const { return isPlain_ ? plain_.end() : found_.end(); }

    // Appends the text from `from`, which is not behind the link, to the link's end as it is to be.
    void rewrite(std::size_t from, std::string &output, CleaningVisitor *visitor) const
    {
        const std::size_t linkBegin = output.size() + begin() - from;
        if (isPlain_) {
            plain_.rewrite(from, output, visitor);
        } else {
            output.append(text_, from, found_.begin() - from);
            found_.rewrite(output, visitor);
        }
        if (visitor != nullptr)
            visitor->visitCleanedLink(begin(), end() - begin(), std::string_view(output).substr(linkBegin));
    }

private:
    std::string_view text_;
    const TrackingRules &rules_;
    std::size_t wordEnd_ = 0; // Of the last word that was looked at.
    // The links in that word, if it is not a plain one; such a word holds no other.
    TrackedLinkScanner found_;
    PlainLink plain_;
    bool isPlain_ = false; // The current link is the plain one.
};

void append(std::vector<RemovedQueryItem> &items, std::string_view name,
            std::optional<std::string_view> value)
{
    RemovedQueryItem &item = items.emplace_back();
    item.name = name;
    item.value = value;
}

// Keeps the removed items of a text.
class ItemList final : public CleaningVisitor {
public:
    explicit ItemList(std::size_t textSize)
        : textSize_(textSize)
    {
    }

    void visitRemovedItem(std::string_view name, std::optional<std::string_view> value) override
    {
        constexpr std::size_t few = 4;
        if (items.empty())
            items.reserve(few);
        append(items, name, value);
    }

    void visitCleanedLink(std::size_t offset, std::size_t length, std::string_view /*replacement*/) override
    {
        makeRoom(offset + length);
    }

    std::vector<RemovedQueryItem> items;

private:
    // The list is grown in few steps, because each moves all of its items: to what the text behind `done`
    // will need if it is like the text before, but not too far at once.
    void makeRoom(std::size_t done)
    {
        constexpr std::size_t many = 64;
        constexpr std::size_t step = 8;
        if (items.size() >= many && items.size() + items.size() / step > items.capacity())
            items.reserve(items.size() * std::min(textSize_ / done + 1, step));
    }

    std::size_t textSize_;
};

// Keeps the changes of a text.
class EditList final : public CleaningVisitor {
public:
    void visitRemovedItem(std::string_view name, std::optional<std::string_view> value) override
    {
        append(items_, name, value);
    }

    void visitCleanedLink(std::size_t offset, std::size_t length, std::string_view replacement) override
    {
        edits.push_back({offset, length, std::string(replacement), std::exchange(items_, {})});
    }

    std::vector<LinkEdit> edits;

private:
    std::vector<RemovedQueryItem> items_;
};

// Appends the text with its links cleaned up to the end of the last one that was, and gives that place.
std::size_t cleanLinks(std::string_view text, TextExtent extent, const TrackingRules &rules,
                       std::string &output, CleaningVisitor *visitor)
{
    std::size_t copied = 0;
    TrackedLinks links(text, extent, rules);
    while (links.next()) {
        if (copied == 0)
            output.reserve(output.size() + text.size() +
                           FoundLink::webScheme.size()); // Supplied to the first.
        links.rewrite(copied, output, visitor);
        copied = links.end();
    }
    return copied;
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
    ItemList list(text.size());
    result.cleanedText +=
        text.substr(cleanLinks(text, TextExtent::whole, *rules_, result.cleanedText, &list));
    result.removedItems = std::move(list.items);
    return result;
}

bool LinkCleaner::appendCleaned(std::string_view text, std::string &output, CleaningVisitor *visitor,
                                TextExtent extent) const
{
    const std::size_t copied = cleanLinks(text, extent, *rules_, output, visitor);
    output += text.substr(copied);
    return copied != 0;
}

std::vector<LinkEdit> LinkCleaner::edits(std::string_view text) const
{
    EditList list;
    std::string replacement;
    TrackedLinks links(text, TextExtent::whole, *rules_);
    while (links.next()) {
        links.rewrite(links.begin(), replacement, &list);
        replacement.clear();
    }
    return std::move(list.edits);
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
    ItemList list(url.size());
    query.rewrite(result.url, {!components->fragment, {}}, &list);
    result.removedItems = std::move(list.items);
    result.url += url.substr(queryBegin + components->query->size());
    return result;
}

} // namespace velmora
