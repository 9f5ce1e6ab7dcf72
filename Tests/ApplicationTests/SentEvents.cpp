#include "SentEvents.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

using namespace Qt::StringLiterals;

QStringList valuesInEvents(const QByteArray &body, const QString &key)
{
    QStringList values;
    const QJsonArray events = QJsonDocument::fromJson(body).object().value(u"events"_s).toArray();
    for (const QJsonValue event : events)
        values.append(event.toObject().value(key).toString());
    return values;
}
