#include <VelmoraPlatform/DelayedSteps.h>

#include <QList>
#include <QTest>

#include <Fakes/VirtualTime.h>
#include <Runner/RegisteredTest.h>

#include <functional>
#include <memory>

using namespace std::chrono_literals;

class DelayedStepsTests : public QObject {
    Q_OBJECT

private Q_SLOTS:

    void stepsOfOneRoundRunInTheirOrder()
    {
        VirtualTime time;
        DelayedSteps steps(time);
        QList<int> ran;
        steps.after(20ms, [&] { ran.append(2); });
        steps.after(10ms, [&] { ran.append(1); });
        steps.after(20ms, [&] { ran.append(3); });

        time.pass(19ms);
        QCOMPARE(ran, QList<int>({1}));
        time.pass(1ms);
        QCOMPARE(ran, QList<int>({1, 2, 3}));
    }

    void startingAgainCancelsTheEarlierRound()
    {
        VirtualTime time;
        DelayedSteps steps(time);
        QList<int> ran;
        steps.after(10ms, [&] { ran.append(1); });
        steps.startOver();
        steps.after(10ms, [&] { ran.append(2); });
        time.pass(1s);
        QCOMPARE(ran, QList<int>({2}));
    }

    void destructionCancelsEverything()
    {
        VirtualTime time;
        bool ran = false;
        {
            DelayedSteps steps(time);
            steps.after(10ms, [&] { ran = true; });
        }
        time.pass(1s);
        QVERIFY(!ran);
    }

    void aGuardedReplyGetsItsArguments()
    {
        VirtualTime time;
        DelayedSteps steps(time);
        QList<int> sums;
        const std::function<void(int, int)> reply = steps.guarded([&](int a, int b) { sums.append(a + b); });
        reply(1, 2);
        reply(3, 4);
        QCOMPARE(sums, QList<int>({3, 7}));
    }

    void aReplyOfAnEarlierRoundOrAfterTheEndDoesNothing()
    {
        VirtualTime time;
        auto steps = std::make_unique<DelayedSteps>(time);
        QList<int> replies;
        const auto early = steps->guarded([&] { replies.append(1); });
        steps->startOver();
        const auto late = steps->guarded([&] { replies.append(2); });
        early();
        late();
        steps.reset();
        late();
        QCOMPARE(replies, QList<int>({2}));
    }

    void aStepMayDestroyItsOwner()
    {
        VirtualTime time;
        auto steps = std::make_unique<DelayedSteps>(time);
        bool second = false;
        steps->after(10ms, [&] { steps.reset(); });
        steps->after(10ms, [&] { second = true; });
        time.pass(1s);
        QVERIFY(!steps);
        QVERIFY(!second);
    }

    void guardedCallsEndWithTheirRound()
    {
        VirtualTime time;
        auto steps = std::make_unique<DelayedSteps>(time);
        QList<int> replies;
        const auto first = steps->guarded([&](int reply) { replies.append(reply); });
        first(1);
        steps->startOver();
        const auto second = steps->guarded([&](int reply) { replies.append(reply); });
        first(2);
        second(3);
        steps.reset();
        second(4);
        QCOMPARE(replies, QList<int>({1, 3}));
    }
};

static const RegisteredTest<DelayedStepsTests> registered;
#include "DelayedStepsTests.moc"
