#pragma once

#include "CleanHistoryEntry.h"

#include <QByteArrayList>
#include <QList>

// The latest cleanings, newest first, at most 30.
//
// It is bounded in bytes, too: a text of more than 256 KiB is kept as its beginning of 4 KiB, and what exceeds
// 4 MiB in its stored form is shortened so, the oldest entries first. Of parameter names the first hundred are
// kept. An entry is encoded once, when it becomes what it is.
class CleanHistory {
public:
    static constexpr qsizetype mostEntries = 30;
    static constexpr std::size_t longestText = std::size_t(256) * 1024;
    static constexpr std::size_t beginning = 4096;
    static constexpr qsizetype mostBytes = qsizetype(4) * 1024 * 1024;

    CleanHistory() = default;
    // From its stored form; empty when that is damaged, or larger than any that is written.
    static CleanHistory fromJson(const QByteArray &json);

    void prepend(CleanHistoryEntry entry);

    [[nodiscard]] const QList<CleanHistoryEntry> &entries() const { return entries_; }

    // The stored form: a JSON array with one object per entry. An entry is a piece.
    [[nodiscard]] QByteArrayList pieces() const;

private:
    void keepWithinLimits();

    QList<CleanHistoryEntry> entries_;
    QByteArrayList encoded_; // One for each entry.
};
