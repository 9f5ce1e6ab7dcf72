#pragma once

#include <QByteArray>
#include <QHash>
#include <QString>

#include <optional>
#include <variant>

// One stored value of its type.
using DefaultsValue = std::variant<bool, qint64, QString, QByteArray>;
using DefaultsValues = QHash<QString, DefaultsValue>;
// What to write: a value, or nothing to remove the key.
using DefaultsChanges = QHash<QString, std::optional<DefaultsValue>>;
