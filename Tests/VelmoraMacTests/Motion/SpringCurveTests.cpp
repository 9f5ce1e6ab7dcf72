#include <VelmoraMac/Motion/SpringCurve.h>

#include <QTest>

#include <Runner/RegisteredTest.h>

using namespace Qt::StringLiterals;

// From rest at 0 to 1.
class SpringCurveTests : public QObject {
    Q_OBJECT

    static double valueAt(const SpringCurve &curve, double seconds)
    {
        return curve.at(seconds, {0, 0}, 1).value;
    }

    // Holds `found` against the row's column, as exactly as it was published.
    static void compare(const char *column, double found, double digits)
    {
        const double expected = *static_cast<double *>(QTest::qData(column, QMetaType::Double));
        QVERIFY2(std::abs(found - expected) <= digits,
                 qPrintable(u"%1: %2"_s.arg(QLatin1String(column)).arg(found)));
    }

private Q_SLOTS:

    void reachesOvershootsAndSettlesAsPublished_data()
    {
        QTest::addColumn<double>("response");
        QTest::addColumn<double>("dampingFraction");
        QTest::addColumn<double>("reaches"); // The following in seconds, the overshoot in parts of the way.
        QTest::addColumn<double>("overshoot");
        QTest::addColumn<double>("peak");
        QTest::addColumn<double>("settled");

        QTest::newRow("a step of the reveal, closing") << 0.24 << 0.86 << 0.195 << 0.0050 << 0.235 << 0.175;
        QTest::newRow("a step of the reveal, opening") << 0.24 << 0.88 << 0.213 << 0.0030 << 0.253 << 0.185;
        QTest::newRow("a pressed button") << 0.28 << 0.82 << 0.197 << 0.0111 << 0.245 << 0.267;
        QTest::newRow("the panel") << 0.28 << 0.84 << 0.211 << 0.0077 << 0.258 << 0.193;
        QTest::newRow("a switch") << 0.32 << 0.82 << 0.225 << 0.0111 << 0.280 << 0.305;
        QTest::newRow("a hover") << 0.34 << 0.82 << 0.239 << 0.0111 << 0.297 << 0.325;
        QTest::newRow("the popover's body") << 0.42 << 0.86 << 0.341 << 0.0050 << 0.412 << 0.306;
        QTest::newRow("the seal's glow, rising") << 0.44 << 0.80 << 0.292 << 0.0152 << 0.367 << 0.445;
        QTest::newRow("a rolling number") << 0.44 << 0.84 << 0.331 << 0.0077 << 0.405 << 0.304;
        QTest::newRow("a notice") << 0.50 << 0.78 << 0.314 << 0.0199 << 0.400 << 0.517;
        QTest::newRow("the seal's glow, relaxing") << 0.62 << 0.78 << 0.389 << 0.0199 << 0.495 << 0.642;
    }

    void reachesOvershootsAndSettlesAsPublished()
    {
        QFETCH(double, response);
        QFETCH(double, dampingFraction);
        const SpringCurve curve{response, dampingFraction};

        double reaches = -1;
        double highest = 0;
        double peak = 0;
        double settled = 0;
        for (int i = 1; i <= 20000; ++i) {
            const double time = i * 0.0001;
            const double value = valueAt(curve, time);
            if (reaches < 0 && value >= 1)
                reaches = time;
            if (value > highest) {
                highest = value;
                peak = time;
            }
            if (std::abs(value - 1) > 0.01)
                settled = time;
        }

        compare("reaches", reaches, 0.0011);
        compare("overshoot", highest - 1, 0.0001);
        compare("peak", peak, 0.0011);
        compare("settled", settled, 0.0011);
    }

    void withoutOvershootWhenCriticallyDamped()
    {
        const SpringCurve curve{0.3, 1};

        double last = 0;
        for (int i = 1; i <= 1000; ++i) {
            const double value = valueAt(curve, i * 0.001);
            QVERIFY(value >= last && value <= 1);
            last = value;
        }
        QVERIFY(last > 0.999);
    }

    void theSpeedIsTheSlopeOfTheWay()
    {
        const SpringCurve curve{0.42, 0.86};
        const SpringCurve::State start{3, -20};

        for (const double time : {0.0, 0.05, 0.2, 0.5}) {
            const double slope =
                (curve.at(time + 1e-6, start, 10).value - curve.at(time, start, 10).value) / 1e-6;
            QVERIFY(std::abs(curve.at(time, start, 10).velocity - slope) < 0.01);
        }
    }

    void takenUpOnTheWayItGoesOnAsIfUntouched()
    {
        const SpringCurve curve{0.28, 0.84};
        const SpringCurve::State half = curve.at(0.1, {0, 0}, 1);

        const SpringCurve::State whole = curve.at(0.17, {0, 0}, 1);
        const SpringCurve::State resumed = curve.at(0.07, half, 1);

        QVERIFY(std::abs(whole.value - resumed.value) < 1e-9);
        QVERIFY(std::abs(whole.velocity - resumed.velocity) < 1e-9);
    }

    void withoutAResponseItIsThereAtOnce()
    {
        QCOMPARE(SpringCurve({0, 0.8}).at(0.01, {5, 3}, 1), (SpringCurve::State{1, 0}));
    }
};

static const RegisteredTest<SpringCurveTests> registered;
#include "SpringCurveTests.moc"
