#include <VelmoraMac/StyleKit/Surroundings.h>

#include <QTest>

#include <Runner/RegisteredTest.h>

class SurroundingsTests : public QObject {
    Q_OBJECT

private Q_SLOTS:

    void lightIsAddedAndStaysWithinTheColours()
    {
        QCOMPARE(Surroundings::lit(QColor(100, 50, 240), 0.1, 1).rgba(), qRgb(126, 76, 255));
        QCOMPARE(Surroundings::lit(QColor(100, 50, 240), 0, 1), QColor(100, 50, 240));
    }

    void saturationKeepsGreysAndLuminance()
    {
        QCOMPARE(Surroundings::lit(QColor(90, 90, 90), 0, 1.5), QColor(90, 90, 90));
        const QColor stronger = Surroundings::lit(QColor(150, 100, 80), 0, 1.5);
        QVERIFY(stronger.red() > 150 && stronger.blue() < 80);
        const auto luminance = [](const QColor &c) {
            return 0.2126 * c.red() + 0.7152 * c.green() + 0.0722 * c.blue();
        };
        QVERIFY(std::abs(luminance(stronger) - luminance(QColor(150, 100, 80))) < 1.5);
    }

    void whatIsTranslucentCoversMore()
    {
        const QColor lit = Surroundings::lit(QColor::fromRgbF(1, 1, 1, 0.11F), 0.075, 1.13);
        QVERIFY(std::abs(lit.alphaF() - 0.185) < 0.001);
    }
};

static const RegisteredTest<SurroundingsTests> registered;
#include "SurroundingsTests.moc"
