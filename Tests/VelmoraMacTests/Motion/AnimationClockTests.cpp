#include <VelmoraMac/Motion/BreathingValue.h>
#include <VelmoraMac/Motion/SpringValue.h>

#include <QQmlComponent>
#include <QTest>

#include <Rehearsal/Stage.h>
#include <Runner/RegisteredTest.h>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

class AnimationClockTests : public QObject {
    Q_OBJECT

    QQmlEngine engine_;

    template<typename Type>
    std::unique_ptr<Type> make(const char *qml)
    {
        QQmlComponent component(&engine_);
        component.setData(QByteArray("import VelmoraMac\n") + qml, QUrl());
        return std::unique_ptr<Type>(qobject_cast<Type *>(component.create()));
    }

    AnimationClock &clock() { return *AnimationClock::in(engine_); }

private Q_SLOTS:

    void initTestCase()
    {
        engine_.addImportPath(u"qrc:/qt/qml"_s);
        clock().setVirtual();
    }

    void stepsRunInOrderAtTheirOwnMoments()
    {
        QStringList log;
        const auto start = clock().now();
        const auto note = [&](const char *what) {
            log.append(u"%1 at %2"_s.arg(QLatin1String(what)).arg((clock().now() - start) / 1ms));
        };
        clock().after(20ms, [&] { note("second"); });
        clock().after(10ms, [&] {
            note("first");
            clock().after(5ms, [&] { note("between"); });
        });

        clock().pass(40ms);

        QCOMPARE(log, QStringList({u"first at 10"_s, u"between at 15"_s, u"second at 20"_s}));
    }

    void aSpringStandsWhereItWasMade()
    {
        const auto spring = make<SpringValue>("SpringValue { to: 4 }");

        QCOMPARE(spring->value(), 4.0);
        QVERIFY(!spring->isMoving());
    }

    void aSpringFollowsItsCurveAndComesToRest()
    {
        const auto spring = make<SpringValue>("SpringValue { to: 0; response: 0.24; dampingFraction: 0.88 }");
        spring->setTo(1);

        clock().pass(100ms);
        QVERIFY(std::abs(spring->value() - SpringCurve{0.24, 0.88}.at(0.1, {0, 0}, 1).value) < 1e-9);
        clock().pass(2s);
        QCOMPARE(spring->value(), 1.0);
        QVERIFY(!spring->isMoving());
    }

    void aNewTargetKeepsValueAndSpeed()
    {
        const auto spring = make<SpringValue>("SpringValue { to: 0; response: 0.28; dampingFraction: 0.84 }");
        spring->setTo(1);
        clock().pass(80ms);
        const SpringCurve curve{0.28, 0.84};
        const SpringCurve::State there = curve.at(0.08, {0, 0}, 1);

        spring->setTo(0);

        QVERIFY(std::abs(spring->value() - there.value) < 1e-9);
        clock().pass(10ms);
        QVERIFY(std::abs(spring->value() - curve.at(0.01, there, 0).value) < 1e-9);
        QVERIFY2(spring->value() > there.value, "it still rises for a moment");
    }

    void aNewResponseAppliesAtOnceFromWhereTheSpringIs()
    {
        const auto spring = make<SpringValue>("SpringValue { to: 0; response: 0.44; dampingFraction: 0.8 }");
        spring->setTo(1);
        clock().pass(100ms);
        const SpringCurve::State there = SpringCurve{0.44, 0.8}.at(0.1, {0, 0}, 1);

        spring->setResponse(0.62);

        clock().pass(50ms);
        QVERIFY(std::abs(spring->value() - SpringCurve{0.62, 0.8}.at(0.05, there, 1).value) < 1e-9);
    }

    void whereLessMotionIsWantedASpringOnlyFades()
    {
        Surroundings::in(engine_)->setReducedMotion(true);
        const auto spring = make<SpringValue>("SpringValue { to: 0; response: 0.62; dampingFraction: 0.5 }");
        spring->setTo(1);

        clock().pass(60ms);
        QVERIFY(std::abs(spring->value() - 0.5) < 1e-9);
        clock().pass(60ms);
        QCOMPARE(spring->value(), 1.0);
        Surroundings::in(engine_)->setReducedMotion(false);
    }

    void breathingGoesThereAndBackForEver()
    {
        const auto breath = make<BreathingValue>("BreathingValue { duration: 2; running: true }");

        QCOMPARE(breath->value(), 0.0);
        clock().pass(1s);
        QVERIFY(std::abs(breath->value() - 0.5) < 1e-3);
        clock().pass(1s);
        QVERIFY(std::abs(breath->value() - 1) < 1e-3);
        clock().pass(1500ms);
        QVERIFY(std::abs(breath->value() - BreathingValue::eased(0.25)) < 1e-3);
        clock().pass(100500ms);
        QVERIFY(std::abs(breath->value()) < 1e-3);
    }

    void theClockRestsWhileNothingMoves()
    {
        QQmlEngine engine;
        engine.addImportPath(u"qrc:/qt/qml"_s);
        AnimationClock &real = *AnimationClock::in(engine);
        int ticks = 0;
        connect(&real, &AnimationClock::ticked, this, [&ticks] { ++ticks; });

        bool ran = false;
        real.after(1ms, [&ran] { ran = true; });
        QTRY_VERIFY(ran);
        QCoreApplication::processEvents();
        const int before = ticks;
        QTest::qWait(60); // Some frames long: nothing to await is the point.

        QCOMPARE(ticks, before);
    }
};

static const RegisteredGuiTest<AnimationClockTests> registered;
#include "AnimationClockTests.moc"
