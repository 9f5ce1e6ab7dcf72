#include <VelmoraMac/State/IgnoredDomains.h>

#include <QSet>
#include <QTest>

#include <Runner/RegisteredTest.h>

using namespace Qt::StringLiterals;

using Hosts = QSet<QString>;

namespace {

Hosts hosts(const QString &text)
{
    Hosts hosts;
    for (const std::string &host : IgnoredDomains::hosts(text))
        hosts.insert(QString::fromStdString(host));
    return hosts;
}

} // namespace

class IgnoredDomainsTests : public QObject {
    Q_OBJECT

private Q_SLOTS:

    void aTextGivesItsHosts_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<Hosts>("expected");
        QTest::newRow("empty") << QString() << Hosts();
        QTest::newRow("trimmed, lower case, duplicates collapse")
            << u"Example.COM\n\n  news.example.org  \nexample.com"_s
            << Hosts{u"example.com"_s, u"news.example.org"_s};
        QTest::newRow("commas and spaces do not separate") << u"a.com, b.com"_s << Hosts{u"a.com, b.com"_s};
        QTest::newRow("every line break separates")
            << u"a\nb\vc\fd\re\x85"
               u"f\u2028g\u2029h\r\ni"_s
            << Hosts{u"a"_s, u"b"_s, u"c"_s, u"d"_s, u"e"_s, u"f"_s, u"g"_s, u"h"_s, u"i"_s};
        QTest::newRow("other controls do not") << u"a\x1e"
                                                  u"b"_s
                                               << Hosts{u"a\x1e"
                                                        u"b"_s};
        QTest::newRow("Unicode blanks are trimmed, also the zero-width space")
            << u"\u200b\u3000\xa0\ta.com\u2003\u202f\u205f\u1680"_s << Hosts{u"a.com"_s};
        QTest::newRow("a word joiner is not trimmed") << u"\u2060a.com"_s << Hosts{u"\u2060a.com"_s};
        QTest::newRow("nothing is repaired")
            << u"HTTPS://www.A.com:80/Path"_s << Hosts{u"https://www.a.com:80/path"_s};
        QTest::newRow("lower case beyond ASCII")
            << u"BÜCHER.example\n\u212Aelvin.example\nΟΔΟΣ.example\nİ.example"_s
            << Hosts{u"bücher.example"_s, u"kelvin.example"_s, u"οδοσ.example"_s, u"i\u0307.example"_s};
    }

    void aTextGivesItsHosts()
    {
        QFETCH(QString, text);
        QFETCH(Hosts, expected);
        QCOMPARE(hosts(text), expected);
    }

    void aHostIsAppendedOnALineOfItsOwn()
    {
        QCOMPARE(IgnoredDomains::appending(QString(), u"a.com"_s), u"a.com"_s);
        QCOMPARE(IgnoredDomains::appending(u"b.com"_s, u"a.com"_s), u"b.com\na.com"_s);
        QCOMPARE(IgnoredDomains::appending(u"b.com\n"_s, u"a.com"_s), u"b.com\n\na.com"_s);
    }

    void aHostIsAppendedDirectlyToBlanks()
    {
        const QString text = IgnoredDomains::appending(u"   "_s, u"a.com"_s);
        QCOMPARE(text, u"   a.com"_s);
        QCOMPARE(hosts(text), Hosts{u"a.com"_s});
    }
};

static const RegisteredTest<IgnoredDomainsTests> registered;
#include "IgnoredDomainsTests.moc"
