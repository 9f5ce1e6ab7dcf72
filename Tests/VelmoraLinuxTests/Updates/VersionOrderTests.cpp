#include <VelmoraLinux/Updates/VersionOrder.h>

#include <QTest>

#include <Runner/RegisteredTest.h>

using namespace Qt::StringLiterals;

namespace {

QString sign(std::weak_ordering order)
{
    return std::is_lt(order) ? u"<"_s : std::is_gt(order) ? u">"_s : u"="_s;
}

QString mirrored(const QString &sign)
{
    return sign == u"<" ? u">"_s : sign == u">" ? u"<"_s : sign;
}

} // namespace

class VersionOrderTests : public QObject {
    Q_OBJECT

private Q_SLOTS:

    void versionsAreOrdered_data()
    {
        QTest::addColumn<QString>("left");
        QTest::addColumn<QString>("expected");
        QTest::addColumn<QString>("right");

        QTest::newRow("equal texts") << u"1.2.3"_s << u"="_s << u"1.2.3"_s;
        QTest::newRow("numbers, not characters") << u"1.10"_s << u">"_s << u"1.9"_s;
        QTest::newRow("one more part is newer") << u"1.0"_s << u"<"_s << u"1.0.1"_s;
        QTest::newRow("a missing zero is supplied") << u"1.0"_s << u"="_s << u"1.0.0"_s;
        QTest::newRow("several missing zeros are supplied") << u"1"_s << u"="_s << u"1.0.0.0"_s;
        QTest::newRow("a beta comes before its release") << u"1.0b1"_s << u"<"_s << u"1.0"_s;
        QTest::newRow("a beta comes after the release before") << u"1.0b1"_s << u">"_s << u"0.9"_s;
        QTest::newRow("a beta comes before the padded release") << u"1.0b1"_s << u"<"_s << u"1.0.0"_s;
        QTest::newRow("betas by letter") << u"1.0a9"_s << u"<"_s << u"1.0b1"_s;
        QTest::newRow("betas by number") << u"1.0b2"_s << u"<"_s << u"1.0b10"_s;
        QTest::newRow("a number beats letters") << u"1.0.b"_s << u"<"_s << u"1.0.0"_s;
        QTest::newRow("what follows a dash does not count") << u"1.0-rc1"_s << u"="_s << u"1.0"_s;
        QTest::newRow("a dash hides a newer tail") << u"1.0-99"_s << u"<"_s << u"1.0.1"_s;
        QTest::newRow("leading zeros do not count") << u"1.007"_s << u"="_s << u"1.7"_s;
        QTest::newRow("separators are alike") << u"1_2"_s << u"="_s << u"1.2"_s;
        QTest::newRow("numbers beyond 64 bits")
            << u"1.99999999999999999999998"_s << u"<"_s << u"1.99999999999999999999999"_s;
        QTest::newRow("a build number") << u"241"_s << u"<"_s << u"1000"_s;
        QTest::newRow("nothing comes before something") << u""_s << u"<"_s << u"0.1"_s;
        QTest::newRow("nothing equals nothing") << u""_s << u"="_s << u""_s;
    }

    void versionsAreOrdered()
    {
        QFETCH(QString, left);
        QFETCH(QString, expected);
        QFETCH(QString, right);

        QCOMPARE(sign(compareVersions(left, right)), expected);
        QCOMPARE(sign(compareVersions(right, left)), mirrored(expected));
        QCOMPARE(sign(compareVersions(left, left)), u"="_s);
    }
};

static const RegisteredTest<VersionOrderTests> registered;
#include "VersionOrderTests.moc"
