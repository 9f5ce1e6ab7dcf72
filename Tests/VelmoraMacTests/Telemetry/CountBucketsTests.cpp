#include <VelmoraMac/Telemetry/CountBuckets.h>

#include <QTest>

#include <Runner/RegisteredTest.h>

using namespace Qt::StringLiterals;

class CountBucketsTests : public QObject {
    Q_OBJECT

private Q_SLOTS:

    void countsFallIntoTheirBuckets_data()
    {
        QTest::addColumn<qint64>("count");
        QTest::addColumn<QString>("cleaned");
        QTest::addColumn<QString>("removed");
        const auto row = [](qint64 count, const QString &cleaned, const QString &removed) {
            QTest::addRow("%lld", count) << count << cleaned << removed;
        };
        row(0, u"0"_s, u"0"_s);
        row(1, u"1-5"_s, u"1-2"_s);
        row(2, u"1-5"_s, u"1-2"_s);
        row(3, u"1-5"_s, u"3-5"_s);
        row(5, u"1-5"_s, u"3-5"_s);
        row(6, u"6-25"_s, u"6-10"_s);
        row(10, u"6-25"_s, u"6-10"_s);
        row(11, u"6-25"_s, u"10+"_s);
        row(25, u"6-25"_s, u"10+"_s);
        row(26, u"26-100"_s, u"10+"_s);
        row(100, u"26-100"_s, u"10+"_s);
        row(101, u"100+"_s, u"10+"_s);
    }

    void countsFallIntoTheirBuckets()
    {
        QFETCH(qint64, count);
        QFETCH(QString, cleaned);
        QFETCH(QString, removed);
        QCOMPARE(cleanedCountBucket(count), cleaned);
        QCOMPARE(removedParameterCountBucket(count), removed);
    }
};

static const RegisteredTest<CountBucketsTests> registered;
#include "CountBucketsTests.moc"
