#include <VelmoraMac/History/LinkLine.h>
#include <VelmoraMac/Texts/RemovedParts.h>

#include <QColor>
#include <QTest>

#include <Rehearsal/Stage.h>
#include <Runner/RegisteredTest.h>

using namespace Qt::StringLiterals;

class LinkLineTests : public QObject {
    Q_OBJECT

private Q_SLOTS:

    void initTestCase() { prepareFont(u"Inter"_s); }

    void whatACleaningRemovedIsFound_data()
    {
        QTest::addColumn<QString>("original");
        QTest::addColumn<QString>("cleaned");
        QTest::addColumn<QStringList>("removed");
        const auto row = [](const char *name, const QString &original, const QString &cleaned,
                            const QStringList &removed) {
            QTest::newRow(name) << original << cleaned << removed;
        };
        row("nothing", u"https://a.example/?b=1"_s, u"https://a.example/?b=1"_s, {});
        row("all", u"https://a.example/?utm=1&x=2"_s, u"https://a.example/"_s, {u"?utm=1&x=2"_s});
        row("the first", u"https://a.example/?utm=1&b=2"_s, u"https://a.example/?b=2"_s, {u"?utm=1"_s});
        row("the last", u"https://a.example/?b=2&utm=1#top"_s, u"https://a.example/?b=2#top"_s,
            {u"&utm=1"_s});
        row("two apart", u"https://a.example/?x=1&b=2&y=3"_s, u"https://a.example/?b=2"_s,
            {u"?x=1"_s, u"&y=3"_s});
        row("written differently", u"https://a.example/?b=%41%2Fc&utm=1"_s, u"https://a.example/?b=A/c"_s,
            {u"&utm=1"_s});
        row("two links", u"see https://a.example/?utm=1 and https://b.example/?gclid=2 there"_s,
            u"see https://a.example/ and https://b.example/ there"_s, {u"?utm=1"_s, u"?gclid=2"_s});
        row("nothing at all", u""_s, u""_s, {});
    }

    void whatACleaningRemovedIsFound()
    {
        QFETCH(QString, original);
        QFETCH(QString, cleaned);
        QFETCH(QStringList, removed);
        QStringList found;
        for (const auto &[start, length] : RemovedParts::in(original, cleaned))
            found.append(original.mid(start, length));
        QCOMPARE(found, removed);
    }

    void aShortLinkIsWholeAndTinted()
    {
        QCOMPARE(LinkLine::styled(u"https://a.example/?b=1&utm=2"_s, u"https://a.example/?b=1"_s, 400, 9, 600,
                                  QColor(255, 0, 0)),
                 u"https://a.example/?b=1<font color=\"#ff0000\">&amp;utm=2</font>"_s);
        QCOMPARE(LinkLine::styled(u"a?<b>"_s, u"a"_s, 400, 9, 600, QColor()), u"a?&lt;b&gt;"_s);
    }

    void aLongLinkIsCutWhereItDiffers()
    {
        const QString clean = u"https://maps.example.net/route?stops="_s + u"stop-"_s.repeated(200);
        const QString original = clean + u"&utm_source=share-sheet"_s;
        const QString before = LinkLine::styled(original, clean, 260, 9, 600, QColor(255, 0, 0));
        const QString after = LinkLine::styled(clean, original, 260, 9, 600, QColor());
        QVERIFY2(before.startsWith(u"https://maps"_s) && before.contains(u"\u2026"_s) &&
                     before.endsWith(u"share-sheet</font>"_s),
                 qPrintable(before));
        QVERIFY2(after.contains(u"\u2026"_s) && after.endsWith(u"stop-"_s), qPrintable(after));
    }

    void aLinkThatReadsDifferentlyIsCutAtItsEnd()
    {
        const QString original = u"https://shop.example.com/kettle?"_s + u"utm_source=x&"_s.repeated(30);
        const QString line =
            LinkLine::styled(original, u"https://shop.example.com/kettle"_s, 260, 9, 600, QColor(255, 0, 0));
        QVERIFY2(line.endsWith(u'\u2026'), qPrintable(line));
    }

    void linesAndLongTextsStayOneShortLine()
    {
        const QString line =
            LinkLine::styled(u"a\nb\t"_s + u"c"_s.repeated(500'000), u""_s, 200, 9, 600, QColor());
        QVERIFY(line.startsWith(u"a b c"_s));
        QVERIFY(line.size() < 200);
    }
};

static const RegisteredGuiTest<LinkLineTests> registered;
#include "LinkLineTests.moc"
