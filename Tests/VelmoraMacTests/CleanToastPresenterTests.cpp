#include <VelmoraMac/CleanToastPresenter.h>

#include <QTest>

#include <Fakes/FakeDesktop.h>
#include <Fakes/FakePanels.h>
#include <Fakes/FakeServices.h>
#include <Runner/RegisteredTest.h>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

CleaningResult resultOf(const QString &link)
{
    return {link + u"?utm_source=x"_s, link, {u"utm_source"_s}};
}

} // namespace

class CleanToastPresenterTests : public QObject {
    Q_OBJECT

private Q_SLOTS:

    void init()
    {
        toasts.reset(); // Before what they were made from.
        fakes = std::make_unique<FakeServices>();
        panels = std::make_unique<FakePanels>();
        screens = {};
        toasts = std::make_unique<CleanToastPresenter>(*panels, screens, fakes->time);
    }

    void theResultNoticeStandsAtTheTopRightAndLetsClicksThrough()
    {
        toasts->show(resultOf(u"https://a.example/"_s));
        // 18 points from the right edge of a work area that begins at 28, 10 below its top.
        QCOMPARE(onScreen().frame, QRect(1280 - 18 - 342, 38, 342, 86));
        QVERIFY(!onScreen().options.acceptsMouse);
        QCOMPARE(onScreen().view.properties.value(u"result"_s).value<CleaningResult>(),
                 resultOf(u"https://a.example/"_s));
    }

    void theWarningAcceptsClicks()
    {
        toasts->showTrackerWarning(resultOf(u"https://a.example/"_s), [] {});
        QCOMPARE(onScreen().frame, QRect(1280 - 18 - 342, 38, 342, 118));
        QVERIFY(onScreen().options.acceptsMouse);
    }

    void aNoticeStaysItsTime_data()
    {
        QTest::addColumn<bool>("warning");
        QTest::addColumn<int>("milliseconds");
        QTest::newRow("result") << false << 2250;
        QTest::newRow("warning") << true << 6000;
    }

    void aNoticeStaysItsTime()
    {
        QFETCH(bool, warning);
        QFETCH(int, milliseconds);
        if (warning)
            toasts->showTrackerWarning(resultOf(u"https://a.example/"_s), [] {});
        else
            toasts->show(resultOf(u"https://a.example/"_s));

        fakes->time.pass(std::chrono::milliseconds(milliseconds - 1));
        QCOMPARE(panels->visible().size(), size_t{1});
        fakes->time.pass(1ms);
        QVERIFY(panels->visible().empty());
        QVERIFY(!panels->records.front()->exists);
    }

    void aSecondNoticeReplacesTheFirstAndKeepsItsFullTime()
    {
        toasts->show(resultOf(u"https://a.example/"_s));
        fakes->time.pass(1s);
        toasts->show(resultOf(u"https://b.example/"_s));
        QCOMPARE(panels->visible().size(), size_t{1});

        fakes->time.pass(2249ms);
        QCOMPARE(onScreen().view.properties.value(u"result"_s).value<CleaningResult>().cleanedText,
                 u"https://b.example/"_s);
        fakes->time.pass(1ms);
        QVERIFY(panels->visible().empty());
    }

    void aResultNoticeAfterAWarningEndsTheWarningAndItsTime()
    {
        toasts->showTrackerWarning(resultOf(u"https://a.example/"_s), [] {});
        fakes->time.pass(5s);
        toasts->show(resultOf(u"https://b.example/"_s));
        QVERIFY(!panels->records.front()->exists);

        fakes->time.pass(1s); // The warning's six seconds are over.
        QCOMPARE(panels->visible().size(), size_t{1});
        fakes->time.pass(1250ms);
        QVERIFY(panels->visible().empty());
    }

    void acceptingTheWarningCleansFirstAndThenRemovesTheNotice()
    {
        bool wasOnScreen = false;
        int cleanings = 0;
        toasts->showTrackerWarning(resultOf(u"https://a.example/"_s), [&] {
            wasOnScreen = !panels->visible().empty();
            ++cleanings;
        });
        onScreen().request("cleanRequested");

        QCOMPARE(cleanings, 1);
        QVERIFY(wasOnScreen);
        QVERIFY(panels->visible().empty());
    }

    void acceptingTheWarningAlsoRemovesTheNoticeThatTheCleaningShows()
    {
        toasts->showTrackerWarning(resultOf(u"https://a.example/"_s),
                                   [this] { toasts->show(resultOf(u"https://a.example/"_s)); });
        const auto warning = panels->records.front();
        warning->request("cleanRequested");

        QVERIFY(panels->visible().empty());
        fakes->time.pass(10s);
        QVERIFY(panels->visible().empty());
    }

    void theWarningOnScreenIsAcceptedWithoutItsButtonToo()
    {
        QStringList cleaned;
        const auto warn = [&](const QString &link) {
            toasts->showTrackerWarning(resultOf(link), [&cleaned, link] { cleaned.append(link); });
        };
        toasts->acceptWarning();
        warn(u"https://a.example/"_s);
        warn(u"https://b.example/"_s);
        toasts->acceptWarning();
        QCOMPARE(cleaned, QStringList{u"https://b.example/"_s});
        QVERIFY(panels->visible().empty());
        toasts->acceptWarning(); // It has gone.

        warn(u"https://c.example/"_s);
        fakes->time.pass(6s);
        toasts->acceptWarning(); // Its time is over.
        warn(u"https://d.example/"_s);
        toasts->show(resultOf(u"https://e.example/"_s));
        toasts->acceptWarning(); // A newer notice has replaced it.
        QCOMPARE(cleaned, QStringList{u"https://b.example/"_s});
    }

    // The clipboard is taken a little later.
    void aNoticeThatFollowsAnAcceptedWarningIsNotShownButTheNextOneIs()
    {
        const CleaningResult result = resultOf(u"https://a.example/"_s);
        toasts->showTrackerWarning(result, [] {});
        onScreen().request("cleanRequested");
        toasts->show(result);
        QVERIFY(panels->visible().empty());

        toasts->show(result);
        QCOMPARE(panels->visible().size(), size_t{1});
    }

    void aWarningThatWasNotAcceptedKeepsNoNoticeFromTheScreen()
    {
        const CleaningResult result = resultOf(u"https://a.example/"_s);
        toasts->showTrackerWarning(result, [] {});
        onScreen().request("cleanRequested");
        toasts->showTrackerWarning(result, [] {});
        toasts->show(result);
        QCOMPARE(panels->visible().size(), size_t{1});
        QCOMPARE(onScreen().frame.height(), 86);
    }

    void withoutAScreenTheNoticeIsStillShown()
    {
        screens.workArea = QRect();
        toasts->show(resultOf(u"https://a.example/"_s));
        QCOMPARE(panels->visible().size(), size_t{1});
        QCOMPARE(onScreen().frame.topLeft(), QPoint(-18 - 342, 10));
    }

private:
    [[nodiscard]] FakePanels::Record &onScreen() const { return *panels->visible().back(); }

    FakeScreens screens;
    std::unique_ptr<FakeServices> fakes;
    std::unique_ptr<FakePanels> panels;
    std::unique_ptr<CleanToastPresenter> toasts;
};

static const RegisteredTest<CleanToastPresenterTests> registered;
#include "CleanToastPresenterTests.moc"
