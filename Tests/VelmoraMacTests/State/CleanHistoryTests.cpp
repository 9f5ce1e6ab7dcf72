#include <VelmoraMac/State/CleanHistory.h>
#include <VelmoraMac/State/CopiedText.h>

#include <QTest>

#include <Fakes/StoredHistory.h>
#include <Runner/RegisteredTest.h>

using namespace Qt::StringLiterals;

namespace {

CleanHistoryEntry entryOf(const QString &original, const QString &cleaned)
{
    CleanHistoryEntry entry;
    entry.id = QUuid::createUuid();
    entry.originalText = original;
    entry.cleanedText = cleaned;
    entry.removedCount = 1;
    entry.removedParameterNames = {u"si"_s};
    return entry;
}

constexpr qsizetype longest = CleanHistory::longestText;
constexpr qsizetype beginning = CleanHistory::beginning;

} // namespace

class CleanHistoryTests : public QObject {
    Q_OBJECT

private Q_SLOTS:

    void everyByteComesBack_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QByteArray all;
        for (int byte = 0; byte < 256; ++byte)
            all += static_cast<char>(byte);
        QTest::newRow("every byte") << all;
        QTest::newRow("empty") << QByteArray();
        QTest::newRow("valid") << QByteArray("a\0b gr\xc3\xbc\xc3\x9f \xf0\x9f\x94\x97", 16);
        QTest::newRow("a cut character at the end") << QByteArray("x \xf0\x9f\x94");
        QTest::newRow("a surrogate in UTF-8") << QByteArray("x\xed\xb2\x80y");
        QTest::newRow("an overlong slash") << QByteArray("\xc0\xaf\xe0\x80\xaf");
        QTest::newRow("beyond Unicode") << QByteArray("\xf4\x90\x80\x80\xf8\x88\x80\x80\x80");
        QTest::newRow("the replacement character") << QByteArray("\xef\xbf\xbd\xff");
        QTest::newRow("a pair that ends like the mark") << QByteArray("\xf0\x9f\x90\x80"
                                                                      "12"); // U+1F400.
    }

    void everyByteComesBack()
    {
        QFETCH(QByteArray, bytes);
        const QString text = textFromBytes(bytes.toStdString());
        QCOMPARE(bytesFromText(text), bytes.toStdString());
        CleanHistory history;
        history.prepend(entryOf(text, u"clean"_s));
        const CleanHistory read = CleanHistory::fromJson(history.pieces().join());
        QCOMPARE(read.entries(), history.entries());
        QCOMPARE(bytesFromText(read.entries().first().originalText), bytes.toStdString());
        QCOMPARE(read.entries().first().originalBytes, 0);
    }

    void aTextAboveTheLimitIsKeptAsItsBeginning()
    {
        CleanHistory history;
        const QString whole(longest, u'x');
        history.prepend(entryOf(whole + u'y', whole));
        for (const CleanHistory &kept : {history, CleanHistory::fromJson(history.pieces().join())}) {
            const CleanHistoryEntry &entry = kept.entries().first();
            QCOMPARE(entry.originalText, QString(beginning, u'x'));
            QCOMPARE(entry.originalBytes, longest + 1);
            QVERIFY(entry.cleanedText == whole);
            QCOMPARE(entry.cleanedBytes, 0);
        }
    }

    void aBeginningEndsWithACharacter_data()
    {
        QTest::addColumn<qsizetype>("before");
        for (const qsizetype before : {0, 1, 2, 3})
            QTest::addRow("%lld letters before", static_cast<long long>(before)) << before;
    }

    void aBeginningEndsWithACharacter()
    {
        QFETCH(qsizetype, before);
        CleanHistory history;
        const QString letters(before, u'a');
        history.prepend(entryOf(letters + u"\u20ac"_s.repeated(longest), {}));
        const QString kept = history.entries().first().originalText;
        QCOMPARE(kept, letters + u"\u20ac"_s.repeated((beginning - before) / 3));
        QCOMPARE(history.entries().first().originalBytes, before + longest * 3);
    }

    void onlyTheOldestTextsGiveWayToTheBudget()
    {
        CleanHistory history;
        for (int i = 0; i < 30; ++i)
            history.prepend(entryOf(QString(longest, QChar(u'a' + i % 26)), QString(longest, u'x')));
        QVERIFY(history.pieces().join().size() <= CleanHistory::mostBytes + 64);
        QCOMPARE(history.entries().size(), 30);
        qsizetype whole = 0;
        while (history.entries().at(whole).originalBytes == 0)
            ++whole;
        QCOMPARE(whole, 7); // Of half a mebibyte each, and of all others there are beginnings.
        for (qsizetype i = whole; i < 30; ++i) {
            QCOMPARE(history.entries().at(i).originalText.size(), beginning);
            QCOMPARE(history.entries().at(i).originalBytes, longest);
        }
        QCOMPARE(CleanHistory::fromJson(history.pieces().join()).entries(), history.entries());
    }

    // The worst that can be stored of each byte.
    void whatGrowsWhenItIsStoredStaysInTheBudget()
    {
        CleanHistory history;
        for (int i = 0; i < 40; ++i)
            history.prepend(
                entryOf(textFromBytes(std::string(longest, '\xff')), QString(longest, u'\u0001')));
        QVERIFY(history.pieces().join().size() <= CleanHistory::mostBytes + 64);
        QCOMPARE(history.entries().size(), 30);
    }

    void aCleaningChangesNoPieceOfAnother()
    {
        CleanHistory history;
        for (int i = 0; i < 30; ++i)
            history.prepend(entryOf(u"https://a.example/?id=%1"_s.arg(i), {}));
        const QByteArrayList before = history.pieces();
        history.prepend(entryOf(u"new"_s, {}));
        QByteArrayList fresh = history.pieces();
        fresh.removeIf([&before](const QByteArray &piece) { return before.contains(piece); });
        QCOMPARE(fresh.size(), 1);
        QVERIFY(fresh.first().contains("new"));
    }

    void aMillionNamesBecomeAHundred()
    {
        CleanHistoryEntry entry = entryOf(u"a"_s, u"b"_s);
        entry.removedParameterNames = QStringList(1'000'000, QString(300, u'n'));
        entry.removedCount = 1'000'000;
        CleanHistory history;
        history.prepend(entry);
        const CleanHistoryEntry &kept = history.entries().first();
        QCOMPARE(kept.removedParameterNames.size(), 100);
        QCOMPARE(kept.removedParameterNames.first(), QString(59, u'n') + QChar(0x2026));
        QCOMPARE(kept.removedCount, 1'000'000);
        QVERIFY(kept.namesText().endsWith(u", \u2026"_s));
        QCOMPARE(entryOf({}, {}).namesText(), u"si"_s);
    }

    // As other builds may have stored it.
    void aStoredHistoryIsBroughtWithinTheLimits()
    {
        QList<CleanHistoryEntry> entries(40, entryOf(QString(longest + 1, u'x'), u"clean"_s));
        for (CleanHistoryEntry &entry : entries)
            entry.removedParameterNames = QStringList(1000, u"n"_s);
        const CleanHistory history = CleanHistory::fromJson(historyToJson(entries));
        QCOMPARE(history.entries().size(), 30);
        QCOMPARE(history.entries().first().originalText.size(), beginning);
        QCOMPARE(history.entries().first().removedParameterNames.size(), 100);
    }

    void aStoredHistoryThatIsFarTooLongIsNotRead()
    {
        const QByteArray stored = historyToJson({entryOf(u"original"_s, u"clean"_s)});
        QCOMPARE(CleanHistory::fromJson(stored.leftJustified(CleanHistory::mostBytes * 4)).entries().size(),
                 1);
        QCOMPARE(
            CleanHistory::fromJson(stored.leftJustified(CleanHistory::mostBytes * 4 + 1)).entries().size(),
            0);
    }

    void anEmptyHistoryIsAnEmptyArray() { QCOMPARE(CleanHistory().pieces().join(), QByteArray("[]")); }

    void whatOnlyLooksLikeAMarkIsText_data()
    {
        QTest::addColumn<QString>("text");
        const QChar mark(0xDC00);
        QTest::newRow("without a number") << (u"a"_s + mark);
        QTest::newRow("with letters") << (u"a"_s + mark + u"12x"_s);
        QTest::newRow("zero") << (u"a"_s + mark + u"0"_s);
        QTest::newRow("negative") << (u"a"_s + mark + u"-5"_s);
    }

    void whatOnlyLooksLikeAMarkIsText()
    {
        QFETCH(QString, text);
        QCOMPARE(textFromMarked(text), (CopiedText{text, 0}));
    }
};

static const RegisteredTest<CleanHistoryTests> registered;
#include "CleanHistoryTests.moc"
