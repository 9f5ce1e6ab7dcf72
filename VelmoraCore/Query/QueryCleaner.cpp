#include <VelmoraCore/Query/KeptItems.h>
#include <VelmoraCore/Query/QueryCleaner.h>
#include <VelmoraCore/QueryItem.h>

#include <algorithm>
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

// What splitting a query at "&" leaves of HTML's "&amp;".
constexpr std::string_view separatorRest = "amp;";

// In HTML a separator is written "&amp;"; it goes with the parameter before it.
std::string_view withoutSeparator(std::string_view name)
{
    while (name.starts_with(separatorRest))
        name.remove_prefix(separatorRest.size());
    return name;
}

// Takes items one by one, writes those that stay and reports the others.
class Rewriting {
public:
    Rewriting(std::string_view query, std::string &link, QueryCleaner::Place place, CleaningVisitor *visitor)
        : link_(link)
        , place_(place)
        , visitor_(visitor)
        , kept_(query)
        , last_(link.size())
    {
    }

    void take(const QueryItem &item, bool removed)
    {
        wasLast_ = false;
        if (!removed && kept_.isNew(item))
            write(item);
        else if (removed && visitor_ != nullptr)
            report(item, *visitor_);
    }

    // A link finder leaves out what ends like a sentence or a bracket. Where another parameter stood behind
    // such an end its last character is escaped, so that the link that is found next time is the same. So it is
    // where that end, or an "=" behind the bracket, is written in another way than it was.
    void finish()
    {
        if ((wasLast_ && isAsWritten_) || !place_.endsLink || last_ == link_.size() ||
            std::string_view(link_).substr(last_) == separatorRest)
            return;
        escapeOpenBrackets(link_, last_);
        const char end = link_.back();
        if (characters::is(end, characters::soft) || isEndMark(end))
            escapeLast(link_);
    }

private:
    void write(const QueryItem &item)
    {
        link_.push_back(separator_);
        appendEscaping(separator_ == '?' ? withoutSeparator(item.name) : item.name);
        if (item.value) {
            link_.push_back('=');
            appendEscaping(*item.value);
        }
        separator_ = '&';
        wasLast_ = true;
    }

    void appendEscaping(std::string_view text)
    {
        last_ = link_.size();
        appendQueryText(link_, text);
        for (const char mark : place_.endMarks) {
            if (mark != '\0')
                keepEscaped(link_, last_, text, mark);
        }
        isAsWritten_ = std::string_view(link_).substr(last_) == text;
    }

    bool isEndMark(char c) const
    {
        return std::find(place_.endMarks.begin(), place_.endMarks.end(), c) != place_.endMarks.end();
    }

    std::string &link_;
    QueryCleaner::Place place_;
    CleaningVisitor *visitor_;
    KeptItems kept_;
    char separator_ = '?';
    std::size_t last_;        // Where the last name or value begins that was written.
    bool isAsWritten_ = true; // That name or value.
    bool wasLast_ = false;    // Nothing was left out behind it.
};

} // namespace

bool QueryCleaner::isTracked()
{
    bool tracked = readFirstItems();
    QueryItemReader reader = rest_;
    for (QueryItem item; !tracked && reader.next(item);)
        tracked = rules_->removes(item, host_);
    return tracked && !rules_->ignores(host_);
}

bool QueryCleaner::readFirstItems()
{
    bool tracked = false;
    while (count_ < remembered && !rest_.isAtEnd()) {
        Decision &decision = decisions_[count_++];
        rest_.next(decision.item);
        decision.isRemoved = rules_->removes(decision.item, host_);
        tracked = tracked || decision.isRemoved;
    }
    return tracked;
}

QueryCleaner::Decision QueryCleaner::last() const
{
    if (rest_.isAtEnd())
        return decisions_[count_ - 1];
    const QueryItem item = itemAt(query_, query_.rfind('&') + 1); // Behind "nowhere" is the beginning.
    return {item, rules_->removes(item, host_)};
}

void QueryCleaner::rewrite(std::string &link, Place place, CleaningVisitor *visitor) const
{
    Rewriting rewriting(query_, link, place, visitor);
    for (std::size_t i = 0; i < count_; ++i)
        rewriting.take(decisions_[i].item, decisions_[i].isRemoved);
    QueryItemReader reader = rest_;
    for (QueryItem item; reader.next(item);)
        rewriting.take(item, rules_->removes(item, host_));
    rewriting.finish();
}

} // namespace velmora
