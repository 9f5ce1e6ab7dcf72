#pragma once

#include <VelmoraMac/State/CleanHistoryEntry.h>
#include <VelmoraMac/State/StoredValue.h>

// Entries in the form in which they are stored.
[[nodiscard]] inline QByteArray historyToJson(const QList<CleanHistoryEntry> &entries)
{
    QByteArrayList encoded;
    for (const CleanHistoryEntry &entry : entries)
        encoded.append(entry.toJson());
    return StoredValue::jsonArray(encoded).join();
}
