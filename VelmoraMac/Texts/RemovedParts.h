#pragma once

#include <QList>
#include <QString>

// What a cleaning has taken out of a text, for showing it.
namespace RemovedParts {

struct Part {
    qsizetype start = 0;
    qsizetype length = 0;
    bool operator==(const Part &) const = default;
};

// The parameters of `original` that `cleaned` does not have, with the character before them, in order. Escapes of the
// same character are equal. Nothing for texts longer than a window can show at once (100,000 characters).
[[nodiscard]] QList<Part> in(const QString &original, const QString &cleaned);

} // namespace RemovedParts
