#include "CleanHistoryEntry.h"

#include "CleaningResult.h"
#include "CopiedText.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>
#include <cmath>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

constexpr auto idKey = "id"_L1;
constexpr auto originalTextKey = "originalText"_L1;
constexpr auto cleanedTextKey = "cleanedText"_L1;
constexpr auto removedCountKey = "removedCount"_L1;
constexpr auto removedParameterNamesKey = "removedParameterNames"_L1;
constexpr auto cleanedAtKey = "cleanedAt"_L1;

constexpr qint64 referenceDate = 978307200; // 2001-01-01 00:00:00 UTC in Unix seconds.

QJsonObject objectOf(const CleanHistoryEntry &entry)
{
    return {{idKey, entry.idText()},
            {originalTextKey, markedText({entry.originalText, entry.originalBytes})},
            {cleanedTextKey, markedText({entry.cleanedText, entry.cleanedBytes})},
            {removedCountKey, entry.removedCount},
            {removedParameterNamesKey, QJsonArray::fromStringList(entry.removedParameterNames)},
            {cleanedAtKey, entry.secondsSince2001}};
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

bool readMarked(const QJsonValue &value, QString &text, qint64 &wholeBytes)
{
    CopiedText copied = textFromMarked(value.toString());
    text = std::move(copied.text);
    wholeBytes = copied.wholeBytes;
    return value.isString();
}

void shortenText(QString &text, qint64 &wholeBytes, std::size_t limit, std::size_t beginning)
{
    if (static_cast<std::size_t>(text.size()) * 3 <= std::min(limit, beginning))
        return; // UTF-8 has three bytes for a code unit at most.
    CopiedText copied{std::move(text), wholeBytes};
    copied.shorten(limit, beginning);
    text = std::move(copied.text);
    wholeBytes = copied.wholeBytes;
}

bool read(const QJsonValue &value, CleanHistoryEntry &entry)
{
    const QJsonObject object = value.toObject();
    return read(object[idKey], entry.id) &&
           readMarked(object[originalTextKey], entry.originalText, entry.originalBytes) &&
           readMarked(object[cleanedTextKey], entry.cleanedText, entry.cleanedBytes) &&
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

QString CleanHistoryEntry::namesText() const
{
    const QString names = removedParameterNames.join(u", "_s);
    return removedCount > removedParameterNames.size() ? names + u", \u2026"_s : names;
}

void CleanHistoryEntry::shorten(std::size_t limit, std::size_t beginning)
{
    shortenText(originalText, originalBytes, limit, beginning);
    shortenText(cleanedText, cleanedBytes, limit, beginning);
    shortenNames(removedParameterNames);
}

QByteArray CleanHistoryEntry::toJson() const
{
    return QJsonDocument(objectOf(*this)).toJson(QJsonDocument::Compact);
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
