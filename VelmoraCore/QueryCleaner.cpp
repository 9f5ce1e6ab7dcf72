#include <VelmoraCore/KeptItems.h>
#include <VelmoraCore/QueryCleaner.h>
#include <VelmoraCore/QueryItem.h>

#include <algorithm>
#include <optional>

namespace velmora {

namespace {

RemovedQueryItem removedItem(const QueryItem &item)
{
    return {percentDecoded(item.name).value_or(std::string()),
            item.value ? percentDecoded(*item.value) : std::nullopt};
}

// Takes items one by one, writes those that stay and reports the others.
class Rewriting {
public:
    Rewriting(std::string &link, std::vector<RemovedQueryItem> &removed)
        : link_(link)
        , removed_(removed)
    {
    }

    void take(const QueryItem &item, bool removed)
    {
        if (removed)
            removed_.push_back(removedItem(item));
        else if (kept_.isNew(item))
            write(item);
    }

private:
    void write(const QueryItem &item)
    {
        link_.push_back(separator_);
        separator_ = '&';
        appendQueryText(link_, item.name);
        if (item.value) {
            link_.push_back('=');
            appendQueryText(link_, *item.value);
        }
    }

    std::string &link_;
    std::vector<RemovedQueryItem> &removed_;
    KeptItems kept_;
    char separator_ = '?';
};

} // namespace

bool QueryCleaner::isTracked()
{
    bool tracked = readFirstItems();
    QueryItemReader reader = rest_;
    while (!tracked) {
        const auto item = reader.next();
        if (!item)
            return false;
        tracked = rules_.removes(*item, host_);
    }
    return !rules_.ignores(host_);
}

bool QueryCleaner::readFirstItems()
{
    bool tracked = false;
    while (count_ < remembered) {
        const auto item = rest_.next();
        if (!item)
            break;
        items_[count_] = *item;
        removed_[count_] = rules_.removes(*item, host_);
        tracked = tracked || removed_[count_];
        ++count_;
    }
    return tracked;
}

void QueryCleaner::rewrite(std::string &link, std::vector<RemovedQueryItem> &removed) const
{
    if (removed.empty())
        removed.reserve(static_cast<std::size_t>(std::count(removed_.begin(), removed_.end(), true)));
    Rewriting rewriting(link, removed);
    for (std::size_t i = 0; i < count_; ++i)
        rewriting.take(items_[i], removed_[i]);
    QueryItemReader reader = rest_;
    while (const auto item = reader.next())
        rewriting.take(*item, rules_.removes(*item, host_));
}

} // namespace velmora
