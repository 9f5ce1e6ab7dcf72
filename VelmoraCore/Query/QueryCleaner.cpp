#include <VelmoraCore/Query/KeptItems.h>
#include <VelmoraCore/Query/QueryCleaner.h>
#include <VelmoraCore/QueryItem.h>

#include <algorithm>

namespace velmora {

namespace {

void report(const QueryItem &item, std::vector<RemovedQueryItem> &removed)
{
    RemovedQueryItem &report = removed.emplace_back();
    if (item.plain) {
        report.name = item.name;
        report.value = item.value;
    } else {
        report.name = percentDecoded(item.name).value_or(std::string());
        report.value = item.value ? percentDecoded(*item.value) : std::nullopt;
    }
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
            report(item, removed_);
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
    for (QueryItem item; !tracked && reader.next(item);)
        tracked = rules_.removes(item, host_);
    return tracked && !rules_.ignores(host_);
}

bool QueryCleaner::readFirstItems()
{
    bool tracked = false;
    for (; count_ < remembered && rest_.next(items_[count_]); ++count_) {
        removed_[count_] = rules_.removes(items_[count_], host_);
        tracked = tracked || removed_[count_];
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
    for (QueryItem item; reader.next(item);)
        rewriting.take(item, rules_.removes(item, host_));
}

} // namespace velmora
