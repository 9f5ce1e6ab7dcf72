#include <VelmoraMac/State/CleanHistoryEntry.h>

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTest>

#include <Fakes/StoredHistory.h>
#include <Fakes/UtcTime.h>
#include <Runner/RegisteredTest.h>

using namespace Qt::StringLiterals;

namespace {

CleanHistoryEntry entry()
{
    CleanHistoryEntry entry;
    entry.id = QUuid(u"0f1e2d3c-4b5a-6978-8796-a5b4c3d2e1f0"_s);
    entry.originalText = u"see https://a.example/?si=1 \"quoted\" \\ \n\tü 🙂"_s;
    entry.cleanedText = u"see https://a.example/ \"quoted\" \\ \n\tü 🙂"_s;
    entry.removedCount = 2;
    entry.removedParameterNames = {u"si"_s, u"si"_s};
    entry.setCleanedAt(utcTime(QDate(2026, 3, 7), QTime(10, 11, 12, 250)));
    return entry;
}

// The array of one whole entry, with `value` under `key`; without the key for undefined.
QByteArray jsonWith(const QString &key, const QJsonValue &value)
{
    QJsonObject object = QJsonDocument::fromJson(historyToJson({entry()})).array().first().toObject();
    object.remove(key);
    if (!value.isUndefined())
        object.insert(key, value);
    return QJsonDocument(QJsonArray{object}).toJson();
}

} // namespace

class CleanHistoryEntryTests : public QObject {
    Q_OBJECT

private Q_SLOTS:

    void theStoredFormHasExactlyItsSixKeys()
    {
        const QJsonArray array = QJsonDocument::fromJson(historyToJson({entry()})).array();
        const QJsonObject expected{
            {u"id"_s, u"0F1E2D3C-4B5A-6978-8796-A5B4C3D2E1F0"_s},
            {u"originalText"_s, entry().originalText},
            {u"cleanedText"_s, entry().cleanedText},
            {u"removedCount"_s, 2},
            {u"removedParameterNames"_s, QJsonArray{u"si"_s, u"si"_s}},
            {u"cleanedAt"_s, 794571072.25},
        };
        QCOMPARE(array, QJsonArray{expected});
    }

    void theStoredFormHasNoWhiteSpaceAndPlainNumbers()
    {
        const QByteArray json = historyToJson({entry()});
        QVERIFY(json.startsWith("[{"));
        QVERIFY(!json.contains('\n'));
        QVERIFY(json.contains("\"cleanedAt\":794571072.25"));
        QVERIFY(json.contains("\"removedCount\":2,"));
    }

    void savingAndReadingGivesEqualEntriesInTheSameOrder()
    {
        CleanHistoryEntry older = entry();
        older.id = QUuid::createUuid();
        older.secondsSince2001 = 786000000.1234567; // Finer than a QDateTime: kept all the same.
        const QList<CleanHistoryEntry> entries{entry(), older};
        QCOMPARE(historyFromJson(historyToJson(entries)).value(), entries);
        QCOMPARE(historyFromJson(historyToJson({})).value(), QList<CleanHistoryEntry>());
    }

    void theMomentIsShownAsItWasRecorded()
    {
        QCOMPARE(entry().cleanedAt(), utcTime(QDate(2026, 3, 7), QTime(10, 11, 12, 250)));
        QCOMPARE(entry().cleanedAt().timeSpec(), Qt::LocalTime);
    }

    void harmlessVariantsAreRead_data()
    {
        QTest::addColumn<QByteArray>("json");
        QTest::newRow("an unknown key") << jsonWith(u"note"_s, u"x"_s);
        QTest::newRow("a lower-case id") << jsonWith(u"id"_s, u"0f1e2d3c-4b5a-6978-8796-a5b4c3d2e1f0"_s);
        QTest::newRow("a whole second") << jsonWith(u"cleanedAt"_s, 794571072);
        QTest::newRow("no names") << jsonWith(u"removedParameterNames"_s, QJsonArray());
        QTest::newRow("a count with an exponent") << jsonWith(u"removedCount"_s, 0).replace(": 0", ": 30e-1");
    }

    void harmlessVariantsAreRead()
    {
        QFETCH(QByteArray, json);
        const auto read = historyFromJson(json);
        QVERIFY(read.has_value());
        QCOMPARE(read->size(), 1);
        QCOMPARE(read->first().id, entry().id);
    }

    void oneWrongFieldEmptiesTheHistory_data()
    {
        QTest::addColumn<QByteArray>("json");
        QTest::newRow("nothing") << QByteArray();
        QTest::newRow("no JSON") << QByteArray("[{");
        QTest::newRow("an object") << QByteArray("{}");
        QTest::newRow("text behind the array") << historyToJson({entry()}) + "x";
        QTest::newRow("broken UTF-8") << historyToJson({entry()}).replace("quoted", "\xff\xfe");
        QTest::newRow("an entry that is no object") << QByteArray("[1]");
        for (const auto &key : {u"id"_s, u"originalText"_s, u"cleanedText"_s, u"removedCount"_s,
                                u"removedParameterNames"_s, u"cleanedAt"_s}) {
            QTest::addRow("no %s", qPrintable(key)) << jsonWith(key, QJsonValue::Undefined);
            QTest::addRow("null as %s", qPrintable(key)) << jsonWith(key, QJsonValue::Null);
            QTest::addRow("a boolean as %s", qPrintable(key)) << jsonWith(key, true);
        }
        QTest::newRow("a fraction as count") << jsonWith(u"removedCount"_s, 3.5);
        QTest::newRow("a text as count") << jsonWith(u"removedCount"_s, u"3"_s);
        QTest::newRow("a count beyond 64 bits")
            << jsonWith(u"removedCount"_s, 0).replace(": 0", ": 9223372036854775808");
        QTest::newRow("a text as date") << jsonWith(u"cleanedAt"_s, u"2026-03-07"_s);
        QTest::newRow("a number among the names")
            << jsonWith(u"removedParameterNames"_s, QJsonArray{u"a"_s, 1});
        QTest::newRow("an id in braces") << jsonWith(u"id"_s, u"{0f1e2d3c-4b5a-6978-8796-a5b4c3d2e1f0}"_s);
        QTest::newRow("an id without hyphens") << jsonWith(u"id"_s, u"0f1e2d3c4b5a69788796a5b4c3d2e1f0"_s);
    }

    void oneWrongFieldEmptiesTheHistory()
    {
        QFETCH(QByteArray, json);
        QVERIFY(!historyFromJson(json).has_value());
    }

    void oneBrokenEntryOfFiveEmptiesTheHistory()
    {
        QJsonArray five;
        for (int i = 0; i < 5; ++i)
            five.append(QJsonDocument::fromJson(historyToJson({entry()})).array().first());
        QVERIFY(historyFromJson(QJsonDocument(five).toJson()).has_value());
        QJsonObject broken = five.at(3).toObject();
        broken.remove(u"removedCount"_s);
        five.replace(3, broken);
        QVERIFY(!historyFromJson(QJsonDocument(five).toJson()).has_value());
    }
};

static const RegisteredTest<CleanHistoryEntryTests> registered;
#include "CleanHistoryEntryTests.moc"
