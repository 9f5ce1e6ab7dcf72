#include "CleanHistoryEntry.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <cmath>

using namespace Qt::StringLiterals;

namespace {

constexpr auto idKey = "id"_L1;
constexpr auto originalTextKey = "originalText"_L1;
constexpr auto cleanedTextKey = "cleanedText"_L1;
constexpr auto removedCountKey = "removedCount"_L1;
constexpr auto removedParameterNamesKey = "removedParameterNames"_L1;
constexpr auto cleanedAtKey = "cleanedAt"_L1;

constexpr qint64 referenceDate = 978307200; // 2001-01-01 00:00:00 UTC in Unix seconds.

QJsonObject toJson(const CleanHistoryEntry &entry)
{
    return {{idKey, entry.idText()},
            {originalTextKey, entry.originalText},
            {cleanedTextKey, entry.cleanedText},
            {removedCountKey, entry.removedCount},
            {removedParameterNamesKey, QJsonArray::fromStringList(entry.removedParameterNames)},
            {cleanedAtKey, entry.secondsSince2001}};
}

bool read(const QJsonValue &value, QString &text)
{
    text = value.toString();
    return value.isString();
}

bool read(const QJsonValue &value, QUuid &id)
{
    const QString text = value.toString();
    id = QUuid::fromString(text);
    // Comparing refuses the braced and unhyphenated spellings that QUuid accepts as well.
    return text.compare(id.toString(QUuid::WithoutBraces), Qt::CaseInsensitive) == 0;
}

bool read(const QJsonValue &value, qint64 &number)
{
    // Of two different defaults at most one can be the stored number itself: both answers agree only for integers.
    number = value.toInteger(0);
    return value.isDouble() && value.toInteger(1) == number;
}

bool read(const QJsonValue &value, double &number)
{
    number = value.toDouble();
    return value.isDouble();
}

bool read(const QJsonValue &value, QStringList &texts)
{
    const QJsonArray array = value.toArray();
    for (const QJsonValue element : array) {
        if (!element.isString())
            return false;
        texts.append(element.toString());
    }
    return value.isArray();
}

bool read(const QJsonValue &value, CleanHistoryEntry &entry)
{
    const QJsonObject object = value.toObject();
    return read(object[idKey], entry.id) && read(object[originalTextKey], entry.originalText) &&
           read(object[cleanedTextKey], entry.cleanedText) &&
           read(object[removedCountKey], entry.removedCount) &&
           read(object[removedParameterNamesKey], entry.removedParameterNames) &&
           read(object[cleanedAtKey], entry.secondsSince2001);
}

} // namespace

QString CleanHistoryEntry::idText() const
{
    return id.toString(QUuid::WithoutBraces).toUpper();
}

QDateTime CleanHistoryEntry::cleanedAt() const
{
    const double milliseconds = std::round(secondsSince2001 * 1000);
    return QDateTime::fromMSecsSinceEpoch(referenceDate * 1000 + static_cast<qint64>(milliseconds));
}

void CleanHistoryEntry::setCleanedAt(const QDateTime &moment)
{
    secondsSince2001 = static_cast<double>(moment.toMSecsSinceEpoch() - referenceDate * 1000) / 1000;
}

QByteArray historyToJson(const QList<CleanHistoryEntry> &entries)
{
    QJsonArray array;
    for (const CleanHistoryEntry &entry : entries)
        array.append(toJson(entry));
    return QJsonDocument(array).toJson(QJsonDocument::Compact);
}

std::optional<QList<CleanHistoryEntry>> historyFromJson(const QByteArray &json)
{
    const QJsonDocument document = QJsonDocument::fromJson(json);
    if (!document.isArray())
        return {};
    QList<CleanHistoryEntry> entries;
    const QJsonArray array = document.array();
    for (const QJsonValue value : array) {
        CleanHistoryEntry entry;
        if (!read(value, entry))
            return {};
        entries.append(entry);
    }
    return entries;
}
