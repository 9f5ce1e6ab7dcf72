#include <VelmoraLinux/Updates/AppcastReader.h>

#include <QTest>

#include <Fakes/UtcTime.h>
#include <Runner/RegisteredTest.h>

using namespace Qt::StringLiterals;

namespace {

QByteArray feedOf(const QByteArray &items)
{
    return "<?xml version='1.0' encoding='utf-8'?>\n"
           "<rss version='2.0' xmlns:sparkle='http://www.andymatuschak.org/xml-namespaces/sparkle'"
           " xmlns:velmora='https://velmora.app/xml-namespaces/updates'>"
           "<channel><title>Velmora</title>" +
           items + "</channel></rss>";
}

const QByteArray enclosureElement =
    "<enclosure url='https://e.example/v.tar.gz' length='7' type='application/gzip'"
    " sparkle:edSignature='c2ln'/>";

AppcastItem onlyItem(const QByteArray &content)
{
    const auto feed = AppcastReader::read(feedOf("<item>" + content + "</item>"));
    return feed && feed->size() == 1 ? feed->first() : AppcastItem();
}

QByteArray nested(int depth)
{
    QByteArray result;
    for (int i = 0; i < depth; ++i)
        result += "<a>";
    for (int i = 0; i < depth; ++i)
        result += "</a>";
    return result;
}

QByteArray billionLaughs()
{
    QByteArray text = "<?xml version='1.0'?><!DOCTYPE rss [<!ENTITY l0 'ha'>";
    for (int i = 1; i < 30; ++i)
        text += QByteArray("<!ENTITY l%1 '&l%2;&l%2;'>")
                    .replace("%1", QByteArray::number(i))
                    .replace("%2", QByteArray::number(i - 1));
    return text + "]><rss><channel><item><description>&l29;</description></item></channel></rss>";
}

} // namespace

class AppcastReaderTests : public QObject {
    Q_OBJECT

private Q_SLOTS:

    void anItemIsReadWhole()
    {
        const AppcastItem item = onlyItem(
            "<title>Two</title><link>https://velmora.example/two</link>"
            "<pubDate>Fri, 20 Nov 2026 19:00:00 +0000</pubDate>"
            "<sparkle:version>20</sparkle:version><sparkle:shortVersionString>2.0</"
            "sparkle:shortVersionString>"
            "<sparkle:minimumSystemVersion>2.36</sparkle:minimumSystemVersion>"
            "<sparkle:maximumSystemVersion>9</sparkle:maximumSystemVersion>"
            "<sparkle:channel>beta</sparkle:channel>"
            "<sparkle:ignoreSkippedUpgradesBelowVersion>15</sparkle:ignoreSkippedUpgradesBelowVersion>"
            "<sparkle:phasedRolloutInterval>86400</sparkle:phasedRolloutInterval>"
            "<sparkle:criticalUpdate sparkle:version='18'/>"
            "<sparkle:informationalUpdate><sparkle:version>11</sparkle:version>"
            "<sparkle:belowVersion>10</sparkle:belowVersion></sparkle:informationalUpdate>"
            "<description sparkle:format='plain-text'>New &amp; better</description>"
            "<enclosure url='https://e.example/v 2.tar.gz' length='4096' type='application/gzip'"
            " sparkle:edSignature='c2ln' sparkle:os='linux' velmora:architecture='x86_64'/>");

        const AppcastItem expected{
            .version = u"20"_s,
            .shownVersion = u"2.0"_s,
            .notes = u"New & better"_s,
            .channel = u"beta"_s,
            .minimumSystem = u"2.36"_s,
            .maximumSystem = u"9"_s,
            .criticalBelow = u"18"_s,
            .ignoreSkippedBelow = u"15"_s,
            .informationalBelow = u"10"_s,
            .informationalFor = {u"11"_s},
            .page = QUrl(u"https://velmora.example/two"_s),
            .published = utcTime({2026, 11, 20}, {19, 0}),
            .phasedInterval = 86400,
            .critical = true,
            .informational = true,
            .enclosures = {{.url = QUrl(u"https://e.example/v%202.tar.gz"_s),
                            .length = 4096,
                            .type = u"application/gzip"_s,
                            .signature = u"c2ln"_s,
                            .system = u"linux"_s,
                            .architecture = u"x86_64"_s}},
        };
        QCOMPARE(item, expected);
    }

    void theVersionIsFound_data()
    {
        QTest::addColumn<QByteArray>("content");
        QTest::addColumn<QString>("version");
        QTest::addColumn<QString>("shown");

        const QByteArray attribute = "<enclosure url='https://e.example/V_9.tar.gz' length='1'"
                                     " sparkle:version='5' sparkle:shortVersionString='0.5'/>";
        QTest::newRow("in an element")
            << "<sparkle:version> 4 </sparkle:version>" + enclosureElement << u"4"_s << u"4"_s;
        QTest::newRow("on the enclosure") << attribute << u"5"_s << u"0.5"_s;
        QTest::newRow("an element wins, before")
            << "<sparkle:version>4</sparkle:version>" + attribute << u"4"_s << u"0.5"_s;
        QTest::newRow("an element wins, behind")
            << attribute + "<sparkle:version>4</sparkle:version>" << u"4"_s << u"0.5"_s;
        QTest::newRow("in the file's name")
            << QByteArray("<enclosure url='https://e.example/Velmora_1.2.tar.gz' length='1'/>") << u"1.2"_s
            << u"1.2"_s;
        QTest::newRow("nowhere: no item") << enclosureElement << QString() << QString();
        QTest::newRow("in a foreign namespace: no item")
            << "<v:version xmlns:v='https://other.example/'>4</v:version>" + enclosureElement << QString()
            << QString();
    }

    void theVersionIsFound()
    {
        QFETCH(QByteArray, content);
        const AppcastItem item = onlyItem(content);
        QTEST(item.version, "version");
        QTEST(item.shownVersion, "shown");
    }

    void enclosuresWithoutAWebAddressAreDropped()
    {
        const AppcastItem item = onlyItem("<sparkle:version>4</sparkle:version>"
                                          "<enclosure url='file:///etc/passwd' length='1'/>"
                                          "<enclosure url='/v.tar.gz' length='1'/>"
                                          "<enclosure length='1'/>" +
                                          enclosureElement);
        QCOMPARE(item.enclosures.size(), 1);
        QCOMPARE(item.enclosures.first().url, QUrl(u"https://e.example/v.tar.gz"_s));
    }

    void notesInHtmlBecomePlainText()
    {
        QCOMPARE(onlyItem("<sparkle:version>4</sparkle:version>"
                          "<description><![CDATA[<h2>New</h2><ul><li>a</li></ul>]]></description>")
                     .notes,
                 u"New\n• a"_s);
    }

    void unknownElementsArePassedOver()
    {
        QCOMPARE(onlyItem("<sparkle:deltas><enclosure url='https://e.example/d' length='1'/></sparkle:deltas>"
                          "<media><deep><deeper>x</deeper></deep></media>"
                          "<sparkle:version>4</sparkle:version>" +
                          enclosureElement)
                     .enclosures.size(),
                 1);
    }

    void aFeedWithoutItemsIsEmpty()
    {
        const auto feed = AppcastReader::read(feedOf(""));
        QVERIFY(feed.has_value());
        QVERIFY(feed->isEmpty());
    }

    void dangerousAndBrokenFeedsAreRefused_data()
    {
        QTest::addColumn<QByteArray>("feed");
        QTest::addColumn<QString>("problem"); // Part of it.

        const QByteArray item = "<item><sparkle:version>4</sparkle:version>" + enclosureElement + "</item>";
        QTest::newRow("nothing") << QByteArray() << u"line 1"_s;
        QTest::newRow("no XML") << QByteArray("Not found") << u"line 1"_s;
        QTest::newRow("cut short") << feedOf(item).chopped(9) << u"line 2"_s;
        QTest::newRow("a web page") << QByteArray("<html><body/></html>") << u"no RSS"_s;
        QTest::newRow("text behind the end") << feedOf(item) + "x" << u"line 2"_s;
        QTest::newRow("an unknown prefix") << feedOf("<other:item/>") << u"line 2"_s;
        QTest::newRow("an empty document type")
            << QByteArray("<!DOCTYPE rss><rss><channel/></rss>") << u"document type"_s;
        QTest::newRow("a document type from elsewhere")
            << QByteArray("<!DOCTYPE rss SYSTEM 'https://evil.example/x.dtd'><rss/>") << u"document type"_s;
        QTest::newRow("a file as entity")
            << QByteArray("<!DOCTYPE rss [<!ENTITY x SYSTEM 'file:///etc/passwd'>]><rss>&x;</rss>")
            << u"document type"_s;
        QTest::newRow("a billion laughs") << billionLaughs() << u"line 1"_s;
        QTest::newRow("an entity nobody defined") << feedOf("<item>&nbsp;</item>") << u"line 2"_s;
        QTest::newRow("nesting without end") << feedOf(nested(100'000)) << u"too deep"_s;
        QTest::newRow("a text without end")
            << feedOf("<item><title>" + QByteArray(200'000, 'x') + "</title><description>" +
                      QByteArray(200'000, 'x') + "</description></item>")
            << u"too long"_s;
        QTest::newRow("items without end") << feedOf(QByteArray(item).repeated(1001)) << u"too many items"_s;
        QTest::newRow("bytes without end")
            << feedOf(QByteArray(AppcastReader::maximumBytes, ' ')) << u"larger than"_s;
    }

    void dangerousAndBrokenFeedsAreRefused()
    {
        QFETCH(QByteArray, feed);
        QFETCH(QString, problem);
        QString found;
        QVERIFY(!AppcastReader::read(feed, &found).has_value());
        QVERIFY2(found.contains(problem), qPrintable(found));
    }
};

static const RegisteredTest<AppcastReaderTests> registered;
#include "AppcastReaderTests.moc"
