#include <VelmoraCore/Query/KeptItems.h>
#include <VelmoraCore/Query/QueryCleaner.h>
#include <VelmoraCore/QueryItem.h>

#include <optional>

namespace velmora {

namespace {

void report(const QueryItem &item, CleaningVisitor &visitor)
{
    if (item.plain) {
        visitor.visitRemovedItem(item.name, item.value);
        return;
    }
    const std::optional<std::string> name = percentDecoded(item.name);
    const std::optional<std::string> value = item.value ? percentDecoded(*item.value) : std::nullopt;
    visitor.visitRemovedItem(name ? std::string_view(*name) : std::string_view(),
                             value ? std::optional<std::string_view>(*value) : std::nullopt);
}

// Takes items one by one, writes those that stay and reports the others.
class Rewriting {
public:
    Rewriting(std::string &link, CleaningVisitor *visitor)
        : link_(link)
        , visitor_(visitor)
    {
    }

    void take(const QueryItem &item, bool removed)
    {
        if (!removed && kept_.isNew(item))
            write(item);
        else if (removed && visitor_ != nullptr)
            report(item, *visitor_);
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
    CleaningVisitor *visitor_;
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

void QueryCleaner::rewrite(std::string &link, CleaningVisitor *visitor) const
{
    Rewriting rewriting(link, visitor);
    for (std::size_t i = 0; i < count_; ++i)
        rewriting.take(items_[i], removed_[i]);
    QueryItemReader reader = rest_;
    for (QueryItem item; reader.next(item);)
        rewriting.take(item, rules_.removes(item, host_));
}

} // namespace velmora
