#include <VelmoraLinux/Updates/PlainNotes.h>

#include <QTest>

#include <Runner/RegisteredTest.h>

using namespace Qt::StringLiterals;

class PlainNotesTests : public QObject {
    Q_OBJECT

private Q_SLOTS:

    void htmlBecomesPlainText_data()
    {
        QTest::addColumn<QString>("html");
        QTest::addColumn<QString>("plain");

        QTest::newRow("words") << u"Just words"_s << u"Just words"_s;
        QTest::newRow("blanks collapse") << u" a \n\t b "_s << u"a b"_s;
        QTest::newRow("paragraphs") << u"<p>One</p><p class='x'>Two</p>"_s << u"One\nTwo"_s;
        QTest::newRow("breaks") << u"a<br>b<BR/>c"_s << u"a\nb\nc"_s;
        QTest::newRow("lists") << u"<ul><li>a</li> <li>b</li></ul>"_s << u"• a\n• b"_s;
        QTest::newRow("emphasis") << u"a <b>bold</b>, <i>slanted</i>"_s << u"a bold, slanted"_s;
        QTest::newRow("entities") << u"&lt;a&gt; &amp; &quot;&#8364;&#x20AC;&apos;"_s << u"<a> & \"€€'"_s;
        QTest::newRow("named entities") << u"Pr&uuml;ft &ouml;ffentliche Schl&uuml;ssel &mdash; &hellip;"_s
                                        << u"Prüft öffentliche Schlüssel — …"_s;
        QTest::newRow("entities that do not exist") << u"AT&T & &foo;"_s << u"AT&T & &foo;"_s;
        QTest::newRow("entities of no character") << u"a&#0;&#7;b&#xD800;"_s << u"ab?"_s;
        QTest::newRow("tags written as entities stay text")
            << u"use &lt;b&gt; and &amp;lt;"_s << u"use <b> and &lt;"_s;
        QTest::newRow("blank lines are not doubled")
            << u"<div><p>a</p></div><div><p>b</p></div>"_s << u"a\nb"_s;
        QTest::newRow("comments") << u"a<!-- <p>x</p> -->b<!-- y"_s << u"ab"_s;
        QTest::newRow("named files are not read")
            << u"<link rel=stylesheet href='/etc/hostname'><img src='/etc/hostname'>a"_s << u"a"_s;
        QTest::newRow("scripts") << u"a<script>alert('<p>')</script>b"_s << u"ab"_s;
        QTest::newRow("styles without end") << u"a<style>p {"_s << u"a"_s;
        QTest::newRow("a tag without end") << u"a<p"_s << u"a"_s;
        QTest::newRow("links keep their words")
            << u"see <a href='https://e.example'>there</a>"_s << u"see there"_s;
        QTest::newRow("nothing") << QString() << QString();
    }

    void htmlBecomesPlainText()
    {
        QFETCH(QString, html);
        QTEST(plainNotes(html), "plain");
    }

    void hostileNotesTakeLinearTime_data()
    {
        QTest::addColumn<QString>("unit");
        for (const char *unit : {"<ul><li>", "<div>", "<b>", "<table><tr><td>", "<!--", "<script>", "<style>",
                                 "<p", "&", "&amp", "<", "<td colspan=1000000>", "<pre>", " ", "<br "})
            QTest::newRow(unit) << QString::fromLatin1(unit);
    }

    // Quadratic time would be minutes here, which ends the test by its time limit.
    void hostileNotesTakeLinearTime()
    {
        QFETCH(QString, unit);
        const qsizetype size = qsizetype{2} * 1024 * 1024;
        QVERIFY(plainNotes(unit.repeated(size / unit.size())).size() <= size);
    }
};

static const RegisteredTest<PlainNotesTests> registered;
#include "PlainNotesTests.moc"
