#include "CleanHistory.h"

#include "StoredValue.h"

#include <utility>

namespace {

constexpr qsizetype longestJson = CleanHistory::mostBytes * 4;

} // namespace

CleanHistory CleanHistory::fromJson(const QByteArray &json)
{
    CleanHistory history;
    if (json.size() > longestJson)
        return history;
    history.entries_ = historyFromJson(json).value_or(QList<CleanHistoryEntry>());
    if (history.entries_.size() > mostEntries)
        history.entries_.resize(mostEntries);
    for (CleanHistoryEntry &entry : history.entries_) {
        entry.shorten(longestText, beginning);
        history.encoded_.append(entry.toJson());
    }
    history.keepWithinLimits();
    return history;
}

void CleanHistory::prepend(CleanHistoryEntry entry)
{
    entry.shorten(longestText, beginning);
    encoded_.prepend(entry.toJson());
    entries_.prepend(std::move(entry));
    if (entries_.size() > mostEntries) {
        entries_.resize(mostEntries);
        encoded_.resize(mostEntries);
    }
    keepWithinLimits();
}

// Entries of nothing but beginnings always fit.
void CleanHistory::keepWithinLimits()
{
    qsizetype bytes = 0;
    for (const QByteArray &entry : encoded_)
        bytes += entry.size();
    for (qsizetype i = entries_.size() - 1; i >= 0 && bytes > mostBytes; --i) {
        bytes -= encoded_[i].size();
        entries_[i].shorten(beginning, beginning);
        encoded_[i] = entries_[i].toJson();
        bytes += encoded_[i].size();
    }
}

QByteArrayList CleanHistory::pieces() const
{
    return StoredValue::jsonArray(encoded_);
}
