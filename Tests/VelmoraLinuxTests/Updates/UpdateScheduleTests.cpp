#include <VelmoraLinux/Updates/UpdateSchedule.h>

#include <QTest>

#include <Fakes/MemoryDefaultsStore.h>
#include <Fakes/VirtualTime.h>
#include <Runner/RegisteredTest.h>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

class UpdateScheduleTests : public QObject {
    Q_OBJECT

private Q_SLOTS:

    void init()
    {
        time_.emplace();
        defaults_.emplace();
        questions_ = 0;
        checks_ = 0;
    }

    void theFirstLaunchAsksAndChecksNothing()
    {
        launch();
        time_->pass(720h);
        QCOMPARE(questions_, 0);
        QCOMPARE(checks_, 0);
        QCOMPARE(defaults_->boolean(u"SUHasLaunchedBefore"), true);
    }

    void theSecondLaunchAsks()
    {
        launch();
        launch();
        QCOMPARE(questions_, 0); // Not before the event loop runs.
        time_->pass(0s);
        QCOMPARE(questions_, 1);
    }

    void nothingIsCheckedBeforeTheAnswer()
    {
        launch();
        launch();
        time_->pass(720h);
        QCOMPARE(questions_, 1);
        QCOMPARE(checks_, 0);
    }

    void anUnansweredQuestionComesAgain()
    {
        launch();
        launch();
        launch();
        time_->pass(0s);
        QCOMPARE(questions_, 1);
    }

    void consentChecksAtOnceAndThenDaily()
    {
        secondLaunchAnswered(true);
        time_->pass(0s);
        QCOMPARE(checks_, 1);
        time_->pass(24h - 1ms);
        QCOMPARE(checks_, 1);
        time_->pass(1ms);
        QCOMPARE(checks_, 2);
        time_->pass(48h);
        QCOMPARE(checks_, 4);
    }

    void refusalIsRemembered()
    {
        secondLaunchAnswered(false);
        time_->pass(48h);
        launch();
        time_->pass(48h);
        QCOMPARE(checks_, 0);
        QCOMPARE(questions_, 1);
        QCOMPARE(time_->waiting(), size_t(0)); // Nothing wakes the program up for nothing.
    }

    void aLaunchWaitsForTheRestOfTheInterval()
    {
        permitted();
        defaults_->setInteger(u"SULastCheckTime", millisecondsAgo(20h));
        launch();
        time_->pass(4h - 1ms);
        QCOMPARE(checks_, 0);
        time_->pass(1ms);
        QCOMPARE(checks_, 1);
    }

    void aLaunchAfterTheIntervalChecksAtOnce()
    {
        permitted();
        defaults_->setInteger(u"SULastCheckTime", millisecondsAgo(25h));
        launch();
        QCOMPARE(checks_, 0); // Not before the event loop runs.
        time_->pass(0s);
        QCOMPARE(checks_, 1);
    }

    void aLastCheckInTheFutureCountsAsNow()
    {
        permitted();
        defaults_->setInteger(u"SULastCheckTime", millisecondsAgo(-1000h));
        launch();
        time_->pass(24h - 1ms);
        QCOMPARE(checks_, 0);
    }

    void aShortIntervalIsRaisedToAnHour()
    {
        permitted();
        defaults_->setInteger(u"SULastCheckTime", millisecondsAgo(0h));
        launch({.interval = 10s, .fixedAnswer = {}});
        time_->pass(1h - 1ms);
        QCOMPARE(checks_, 0);
        time_->pass(1ms);
        QCOMPARE(checks_, 1);
    }

    void aCheckByTheUserPutsTheNextOneOff()
    {
        permitted();
        defaults_->setInteger(u"SULastCheckTime", millisecondsAgo(23h));
        launch();
        time_->pass(30min);
        schedule_->noteCheck();
        time_->pass(24h - 1ms);
        QCOMPARE(checks_, 0);
        time_->pass(1ms);
        QCOMPARE(checks_, 1);
    }

    void aLongSleepIsNoticedSoonAfterWaking()
    {
        permitted();
        defaults_->setInteger(u"SULastCheckTime", millisecondsAgo(0h));
        launch();
        time_->pass(1min);
        time_->wallClock().set(time_->wallClock().now().addDays(3)); // The steady clock stood still.
        time_->pass(30min);
        QCOMPARE(checks_, 1);
    }

    void aFixedAnswerIsNeverAskedFor()
    {
        launch({.interval = 24h, .fixedAnswer = true});
        launch({.interval = 24h, .fixedAnswer = true});
        time_->pass(0s);
        QCOMPARE(questions_, 0);
        QCOMPARE(checks_, 1);
    }

    void aFixedRefusalBeatsTheStoredConsent()
    {
        permitted();
        launch({.interval = 24h, .fixedAnswer = false});
        time_->pass(48h);
        QCOMPARE(checks_, 0);
        QCOMPARE(questions_, 0);
    }

private:
    void launch(UpdateSchedule::Settings settings = {})
    {
        schedule_.reset();
        schedule_.emplace(*defaults_, *time_, time_->wallClock(), settings,
                          UpdateSchedule::Actions{[this] { ++questions_; }, [this] { ++checks_; }});
        schedule_->start();
    }

    void secondLaunchAnswered(bool granted)
    {
        launch();
        launch();
        time_->pass(0s);
        QCOMPARE(questions_, 1);
        schedule_->setPermission(granted);
    }

    void permitted()
    {
        defaults_->setBoolean(u"SUHasLaunchedBefore", true);
        defaults_->setBoolean(u"SUEnableAutomaticChecks", true);
    }

    qint64 millisecondsAgo(std::chrono::milliseconds duration)
    {
        return time_->wallClock().now().toMSecsSinceEpoch() - duration.count();
    }

    std::optional<VirtualTime> time_;
    std::optional<MemoryDefaultsStore> defaults_;
    std::optional<UpdateSchedule> schedule_;
    int questions_ = 0;
    int checks_ = 0;
};

static const RegisteredTest<UpdateScheduleTests> registered;
#include "UpdateScheduleTests.moc"
