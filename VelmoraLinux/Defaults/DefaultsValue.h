#pragma once

#include <QByteArrayList>
#include <QHash>
#include <QString>

#include <optional>
#include <variant>

// One stored value of its type; data in pieces, which are one behind the other.
using DefaultsValue = std::variant<bool, qint64, QString, QByteArrayList>;
using DefaultsValues = QHash<QString, DefaultsValue>;
// What to write: a value, or nothing to remove the key.
using DefaultsChanges = QHash<QString, std::optional<DefaultsValue>>;
