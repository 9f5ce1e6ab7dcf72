#include "Expect.h"

#include <VelmoraMac/State/CleanHistory.h>
#include <VelmoraMac/Telemetry/TelemetryEnvelope.h>

#include <cstdint>

// The history and the queue of usage events as they stand in the store, where other programs can write.

namespace {

void checkHistory(const QByteArray &json)
{
    CleanHistory history = CleanHistory::fromJson(json);
    expect(history.entries().size() <= CleanHistory::mostEntries, "no history is longer than it may be");
    const QByteArray stored = history.pieces().join();
    expect(stored.size() <= CleanHistory::mostBytes, "no history is larger than it may be");
    expect(CleanHistory::fromJson(stored).entries() == history.entries(), "what is stored comes back");

    CleanHistoryEntry entry;
    entry.id = QUuid(u"{00000000-0000-4000-8000-000000000001}");
    entry.originalText = QString::fromUtf8(json);
    entry.cleanedText = entry.originalText;
    history.prepend(entry);
    expect(history.entries().size() <= CleanHistory::mostEntries, "a new entry replaces the oldest");
    expect(history.entries().constFirst().id == entry.id, "a new entry is the first");
    expect(CleanHistory::fromJson(history.pieces().join()).entries() == history.entries(),
           "what is stored with a new entry comes back");
}

void checkQueue(const QByteArray &json)
{
    const auto queue = queueFromJson(json);
    if (!queue)
        return;
    const auto again = queueFromJson(queueToPieces(*queue).join());
    expect(again == queue, "a stored queue comes back");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const QByteArray json(reinterpret_cast<const char *>(data), static_cast<qsizetype>(size));
    checkHistory(json);
    checkQueue(json);
    return 0;
}
