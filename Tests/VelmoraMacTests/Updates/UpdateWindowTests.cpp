#include <VelmoraMac/Updates/UpdateWindow.h>

#include <QSignalSpy>
#include <QTest>

#include <Fakes/FakeAppWindows.h>
#include <Fakes/FakeServices.h>
#include <Runner/RegisteredTest.h>

using namespace Qt::StringLiterals;

namespace {

UpdateReport reportOf(UpdateStep step)
{
    UpdateReport report;
    report.step = step;
    report.version = u"2.0"_s;
    report.ownVersion = u"1.0"_s;
    return report;
}

constexpr auto inFront = UpdateUserDriver::Attention::front;
constexpr auto quietly = UpdateUserDriver::Attention::quiet;

} // namespace

class UpdateWindowTests : public QObject {
    Q_OBJECT

private Q_SLOTS:

    void init()
    {
        fakes_ = std::make_unique<FakeServices>();
        windows_ = {};
        answers_.clear();
        state_ = std::make_unique<AppState>(fakes_->dependencies());
        window_ = std::make_unique<UpdateWindow>(*state_, windows_);
        window_->setAnswerHandler([this](UpdateAnswer answer) { answers_.append(answer); });
    }

    void cleanup()
    {
        window_.reset();
        state_.reset();
    }

    void everyStepHasItsButtons_data()
    {
        QTest::addColumn<UpdateStep>("step");
        QTest::addColumn<QString>("accept");
        QTest::addColumn<QString>("dismiss");
        QTest::addColumn<QString>("skip");
        QTest::addColumn<bool>("working");

        const QString none;
        const QString ok = u"OK"_s;
        QTest::newRow("permission") << UpdateStep::permission << u"Check Automatically"_s << u"Don’t Check"_s
                                    << none << false;
        QTest::newRow("checking") << UpdateStep::checking << none << u"Cancel"_s << none << true;
        QTest::newRow("up to date") << UpdateStep::upToDate << ok << none << none << false;
        QTest::newRow("found") << UpdateStep::found << u"Install Update"_s << u"Remind Me Later"_s
                               << u"Skip This Version"_s << false;
        QTest::newRow("downloading") << UpdateStep::downloading << none << u"Cancel"_s << none << true;
        QTest::newRow("verifying") << UpdateStep::verifying << none << none << none << true;
        QTest::newRow("ready") << UpdateStep::ready << u"Install and Relaunch"_s << u"Later"_s << none
                               << false;
        QTest::newRow("installing") << UpdateStep::installing << none << none << none << true;
        QTest::newRow("managed") << UpdateStep::managed << ok << none << none << false;
        QTest::newRow("failed") << UpdateStep::failed << ok << none << none << false;
    }

    void everyStepHasItsButtons()
    {
        QFETCH(UpdateStep, step);
        window_->show(reportOf(step), inFront);
        QTEST(window_->acceptTitle(), "accept");
        QTEST(window_->dismissTitle(), "dismiss");
        QTEST(window_->skipTitle(), "skip");
        QTEST(window_->isWorking(), "working");
        QVERIFY(!window_->headline().isEmpty());
        QVERIFY(!window_->headline().contains(u'%') && !window_->message().contains(u'%'));
    }

    void aCriticalUpdateCanOnlyBeInstalled()
    {
        UpdateReport report = reportOf(UpdateStep::found);
        report.mayBePutOff = false;
        window_->show(report, inFront);
        QCOMPARE(window_->acceptTitle(), u"Install Update"_s);
        QCOMPARE(window_->dismissTitle() + window_->skipTitle(), QString());
        window_->skip();
        QVERIFY(answers_.isEmpty());
    }

    void everyProblemHasItsWords()
    {
        QSet<QString> messages;
        for (int problem = 0; problem <= static_cast<int>(UpdateProblem::badKey); ++problem) {
            UpdateReport report = reportOf(UpdateStep::failed);
            report.problem = static_cast<UpdateProblem>(problem);
            messages.insert(updateTexts(report, AppLanguage::english).message);
            messages.insert(updateTexts(report, AppLanguage::german).message);
        }
        QCOMPARE(messages.size(), 2 * (static_cast<int>(UpdateProblem::badKey) + 1));
    }

    void bytesAreWrittenInTheLanguage()
    {
        UpdateReport report = reportOf(UpdateStep::downloading);
        report.received = 1'500'000;
        report.total = 3'000'000;
        window_->show(report, inFront);
        QCOMPARE(window_->message(), u"1.5 MB of 3.0 MB"_s);
        QCOMPARE(window_->progress(), 0.5);
        QSignalSpy changes(window_.get(), &UpdateWindow::changed);
        state_->setLanguage(AppLanguage::german);
        QCOMPARE(window_->message(), u"1,5 MB von 3,0 MB"_s);
        QCOMPARE(changes.count(), 1);
    }

    void anUnknownLengthHasNoProgress()
    {
        window_->show(reportOf(UpdateStep::downloading), inFront);
        QVERIFY(window_->progress() < 0);
    }

    void oneWindowShowsAllSteps()
    {
        window_->show(reportOf(UpdateStep::checking), inFront);
        window_->show(reportOf(UpdateStep::found), inFront);
        QCOMPARE(windows_.log, QStringList({u"made"_s, u"centred"_s, u"to the front"_s}));
        QCOMPARE(windows_.view.source, QUrl(u"qrc:/qt/qml/VelmoraMac/Updates/UpdateView.qml"_s));
    }

    void whatNobodyAskedForTakesNoFocus()
    {
        window_->show(reportOf(UpdateStep::found), quietly);
        QCOMPARE(windows_.log.last(), u"shown quietly"_s);
        window_->bringToFront();
        QCOMPARE(windows_.log.last(), u"to the front"_s);
    }

    void theWindowsCloseButtonIsADismissal()
    {
        window_->show(reportOf(UpdateStep::found), inFront);
        windows_.options.closed();
        QCOMPARE(answers_, QList({UpdateAnswer::dismiss}));
    }

    // There is nothing to answer while an update is being verified, but the window can be closed.
    void aQuestionBringsAClosedWindowBackQuietly()
    {
        window_->show(reportOf(UpdateStep::verifying), inFront);
        windows_.visible = false;
        windows_.options.closed();
        window_->show(reportOf(UpdateStep::installing), inFront);
        QVERIFY(!windows_.visible);
        window_->show(reportOf(UpdateStep::ready), inFront);
        QCOMPARE(windows_.log.mid(3), QStringList({u"shown quietly"_s}));
    }

    void answersAreHandedOn()
    {
        window_->show(reportOf(UpdateStep::found), inFront);
        window_->accept();
        window_->skip();
        QCOMPARE(answers_, QList({UpdateAnswer::accept, UpdateAnswer::skip}));
    }

    void whatHasNoButtonIsNoAnswer()
    {
        window_->show(reportOf(UpdateStep::downloading), inFront);
        window_->accept();
        window_->skip();
        QVERIFY(answers_.isEmpty());
    }

    void afterADismissalNothingIsOnShow()
    {
        window_->show(reportOf(UpdateStep::found), inFront);
        window_->dismiss();
        window_->accept();
        QVERIFY(answers_.isEmpty());
        window_->show(reportOf(UpdateStep::found), inFront);
        QCOMPARE(windows_.log.count(u"made"_s), 2);
    }

private:
    std::unique_ptr<FakeServices> fakes_;
    FakeAppWindows windows_;
    std::unique_ptr<AppState> state_;
    std::unique_ptr<UpdateWindow> window_;
    QList<UpdateAnswer> answers_;
};

static const RegisteredTest<UpdateWindowTests> registered;
#include "UpdateWindowTests.moc"
