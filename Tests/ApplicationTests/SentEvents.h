#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

// What the events in the body of a request have under `key`, such as "id", in their order.
[[nodiscard]] QStringList valuesInEvents(const QByteArray &body, const QString &key);
