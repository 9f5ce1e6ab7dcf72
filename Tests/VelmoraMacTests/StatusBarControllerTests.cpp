#include <VelmoraMac/StatusBarController.h>

#include <QTest>

#include <Fakes/FakeDesktop.h>
#include <Fakes/FakePanels.h>
#include <Fakes/FakeServices.h>
#include <Fakes/FakeStatusItem.h>
#include <Runner/RegisteredTest.h>

#include <memory>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

const CleaningResult someResult{
    u"https://a.example/?utm_source=x"_s, u"https://a.example/"_s, {u"utm_source"_s}};

class FakeUpdater final : public Updater {
public:
    explicit FakeUpdater(int &checks)
        : checks_(checks)
    {
    }

    void checkForUpdates() override { ++checks_; }

    [[nodiscard]] bool canCheckForUpdates() const override { return true; }

    void setChangeHandler(ChangeHandler) override {}

private:
    int &checks_;
};

class RecordingPresenter final : public AppWindowPresenting {
public:
    void showAppWindow(AppTab tab) override { tabs.append(rawValue(tab)); }

    QStringList tabs;
};

// A desktop with everything the controller touches.
struct Shell {
    explicit Shell(bool updates = false)
    {
        if (!updates)
            return;
        fakes.bundle.values = {{u"SUFeedURL"_s, u"https://velmora.example/appcast.xml"_s},
                               {u"SUPublicEDKey"_s, u"a key"_s},
                               {u"CFBundleShortVersionString"_s, u"1.0"_s},
                               {u"CFBundleVersion"_s, u"1"_s},
                               {u"CFBundleIdentifier"_s, u"app.velmora.Velmora"_s}};
    }

    AppState &appState()
    {
        if (!state)
            state = std::make_unique<AppState>(fakes.dependencies());
        return *state;
    }

    void launch()
    {
        updateController =
            std::make_unique<UpdateController>(fakes.bundle, [this](const UpdateConfiguration &) {
                return std::make_unique<FakeUpdater>(updateChecks);
            });
        QImage image(34, 34, QImage::Format_ARGB32_Premultiplied);
        image.fill(Qt::black);
        controller = std::make_unique<StatusBarController>(
            appState(), *updateController, presenter,
            StatusBarController::Dependencies{.statusItem = item,
                                              .templateImage = image,
                                              .panels = panels,
                                              .menus = menus,
                                              .pointer = pointer,
                                              .screens = screens,
                                              .scheduler = fakes.time,
                                              .telemetry = fakes.telemetry,
                                              .notifications = notifications,
                                              .terminate = [this] { ++terminations; }});
    }

    void click() const { item.events.activated(); }

    void rightClick() const { item.events.menuRequested(); }

    QStringList menuTitles() const
    {
        QStringList titles;
        for (const StatusMenuEntry &entry : item.menu)
            titles.append(entry.title);
        return titles;
    }

    void choose(const QString &title) const
    {
        for (const StatusMenuEntry &entry : item.menu) {
            if (entry.title == title)
                return entry.action();
        }
        QFAIL(qPrintable(u"no entry "_s + title));
    }

    FakePanels::Record &popover() const { return *panels.visible().back(); }

    int closeRequests() const
    {
        auto *const animation =
            popover().view.properties.value(u"popoverAnimation"_s).value<PopoverAnimationState *>();
        return animation->closeRequest();
    }

    FakeServices fakes;
    FakeStatusItem item;
    FakePanels panels;
    FakeMenuPresenter menus;
    FakePointerMonitor pointer;
    FakeScreens screens;
    NotificationCenter notifications;
    std::shared_ptr<RecordingPresenter> presenter = std::make_shared<RecordingPresenter>();
    int updateChecks = 0;
    int terminations = 0;
    std::unique_ptr<AppState> state;
    std::unique_ptr<UpdateController> updateController;
    std::unique_ptr<StatusBarController> controller;
};

} // namespace

class StatusBarControllerTests : public QObject {
    Q_OBJECT

private Q_SLOTS:

    // Icon and tooltip

    void theIconIsFullWhileActiveAndDimWhilePaused()
    {
        Shell shell;
        shell.launch();
        QCOMPARE(shell.item.templateSize, QSize(17, 17));
        QCOMPARE(shell.item.opacity, 1.0);

        shell.appState().setAutoCleanEnabled(false);
        QCOMPARE(shell.item.opacity, 0.38);
    }

    void theTooltipTellsStateAndCount()
    {
        Shell shell;
        shell.fakes.defaults.place(u"totalCleaned"_s, qint64{11});
        shell.launch();
        QCOMPARE(shell.item.toolTip, u"Velmora \u00b7 Active \u00b7 11 links cleaned"_s);

        shell.appState().record(someResult);
        QCOMPARE(shell.item.toolTip, u"Velmora \u00b7 Active \u00b7 12 links cleaned"_s);

        shell.appState().setAutoCleanEnabled(false);
        QCOMPARE(shell.item.toolTip, u"Velmora \u00b7 Paused \u00b7 12 links cleaned"_s);
    }

    void afterThreeCleaningsTheGermanTooltipIsGerman()
    {
        Shell shell;
        shell.appState().setLanguage(AppLanguage::german);
        shell.launch();
        for (int i = 0; i < 3; ++i)
            shell.appState().record(someResult);

        QCOMPARE(shell.item.toolTip, u"Velmora \u00b7 Aktiv \u00b7 3 links bereinigt"_s);
    }

    void aCleaningPulsesTheIcon_data()
    {
        QTest::addColumn<bool>("active");
        QTest::addColumn<double>("dip");
        QTest::addColumn<double>("rest");
        QTest::newRow("active") << true << 0.45 << 1.0;
        QTest::newRow("paused") << false << 0.22 << 0.38;
    }

    void aCleaningPulsesTheIcon()
    {
        QFETCH(bool, active);
        QFETCH(double, dip);
        QFETCH(double, rest);
        Shell shell;
        shell.launch();
        shell.appState().setAutoCleanEnabled(active);
        shell.item.log.clear();

        shell.appState().record(someResult);
        shell.fakes.time.pass(159ms);
        QCOMPARE(shell.item.log, QStringList(u"%1 in 160 ms"_s.arg(dip)));

        shell.fakes.time.pass(1ms);
        QCOMPARE(shell.item.opacity, rest);
    }

    void withoutACleaningThereIsNoPulseAtTheStart()
    {
        Shell shell;
        shell.launch();
        QCOMPARE(shell.item.log.filter(u" in "_s), QStringList());
    }

    void aCleaningBeforeTheControllerExistsPulsesOnce()
    {
        Shell shell;
        shell.appState().record(someResult);
        shell.launch();
        QCOMPARE(shell.item.log.filter(u" in "_s), QStringList(u"0.45 in 160 ms"_s));
    }

    void aHiddenIconStaysAsThePulseLeftIt()
    {
        Shell shell;
        shell.launch();
        shell.appState().record(someResult);
        shell.item.visible = false;
        shell.fakes.time.pass(1s);
        QCOMPARE(shell.item.opacity, 0.45);
    }

    void theRestoreNotificationBringsAHiddenIconBackAndPulsesIt()
    {
        Shell shell;
        shell.launch();
        shell.item.setVisible(false);
        shell.item.setEvents({});
        shell.item.log.clear();

        shell.notifications.post(u"SomethingElse"_s);
        QVERIFY(!shell.item.visible);
        shell.notifications.post(u"VelmoraRestoreMenuBarIcon"_s);

        QVERIFY(shell.item.visible);
        QCOMPARE(shell.item.log.last(), u"0.45 in 160 ms"_s);
        shell.click();
        QCOMPARE(shell.panels.visible().size(), size_t{1});
    }

    // Opening

    void aClickOpensThePopoverBelowTheIcon()
    {
        Shell shell;
        shell.launch();
        shell.click();

        QCOMPARE(shell.panels.visible().size(), size_t{1});
        // Centred under the icon, whose middle is 912, and 8 points inside the work area, which
        // begins at 28. from 28.
        QCOMPARE(shell.popover().frame, QRect(912 - 306 / 2, 36, 306, 386));
        QVERIFY(shell.popover().options.acceptsMouse);
        QCOMPARE(shell.fakes.telemetry.names(), QStringList(u"menu_popover_opened"_s));
        QVERIFY(shell.pointer.isListening());
    }

    void thePopoverIsReportedWhenItIsOnScreen()
    {
        Shell shell;
        shell.launch();
        size_t onScreen = 0;
        shell.fakes.telemetry.heard = [&] { onScreen = shell.panels.visible().size(); };
        shell.click();
        QCOMPARE(onScreen, size_t{1});
    }

    void withALastResultThePopoverIsTaller()
    {
        Shell shell;
        shell.appState().record(someResult);
        shell.launch();
        shell.click();
        QCOMPARE(shell.popover().frame.size(), QSize(306, 536));
    }

    void withoutAnyAnchorThePopoverOpensAtTheTopMiddle()
    {
        Shell shell;
        shell.item.place = {};
        shell.launch();
        shell.click();
        QCOMPARE(shell.popover().frame.top(), 36);
        QVERIFY(qAbs(shell.popover().frame.center().x() - 640) <= 1);
    }

    void aSecondClickWithin360MillisecondsIsIgnored()
    {
        Shell shell;
        shell.launch();
        shell.click();
        shell.fakes.time.pass(359ms);
        shell.click();
        QCOMPARE(shell.closeRequests(), 0);

        shell.fakes.time.pass(1ms);
        shell.click();
        QCOMPARE(shell.closeRequests(), 1);
    }

    // Closing

    void closingPlaysForAQuarterOfASecond()
    {
        Shell shell;
        shell.launch();
        shell.click();
        shell.fakes.time.pass(400ms);
        shell.click();
        shell.fakes.time.pass(249ms);
        QCOMPARE(shell.panels.visible().size(), size_t{1});

        shell.fakes.time.pass(1ms);
        QVERIFY(shell.panels.visible().empty());
        QVERIFY(!shell.panels.records.front()->exists);
        QVERIFY(!shell.pointer.isListening());
    }

    void aClickWhileClosingIsIgnoredAndTheNextOneOpensANewPanel()
    {
        Shell shell;
        shell.launch();
        shell.click();
        shell.fakes.time.pass(400ms);
        shell.click();
        shell.fakes.time.pass(200ms);
        shell.click();
        QCOMPARE(shell.closeRequests(), 1);
        QCOMPARE(shell.panels.records.size(), size_t{1});

        shell.fakes.time.pass(50ms); // The finished close lifts the block.
        shell.click();
        QCOMPARE(shell.panels.records.size(), size_t{2});
        QCOMPARE(shell.panels.visible().size(), size_t{1});
    }

    void anOlderBlockDoesNotLiftALaterOne()
    {
        Shell shell;
        shell.launch();
        shell.click(); // Blocks until 360.
        shell.fakes.time.pass(100ms);
        shell.rightClick(); // Closes at once and lifts the block.
        shell.click();      // Opens again and blocks until 460.
        QCOMPARE(shell.panels.records.size(), size_t{2});
        shell.fakes.time.pass(300ms);
        shell.click();
        QCOMPARE(shell.closeRequests(), 0);
        shell.fakes.time.pass(60ms);
        shell.click();
        QCOMPARE(shell.closeRequests(), 1);
    }

    void aStaleCloseLeavesANewerPanelAlone()
    {
        Shell shell;
        shell.launch();
        shell.click();
        shell.fakes.time.pass(400ms);
        shell.click();      // Would finish at 650.
        shell.rightClick(); // Finishes at once.
        shell.click();      // A new panel.
        shell.fakes.time.pass(300ms);
        QCOMPARE(shell.panels.visible().size(), size_t{1});
        QVERIFY(shell.pointer.isListening());
    }

    void aRightClickClosesAtOnceAndOpensTheMenu()
    {
        Shell shell;
        shell.launch();
        shell.click();
        shell.rightClick();

        QVERIFY(shell.panels.visible().empty());
        QCOMPARE(shell.menus.menus.size(), size_t{1});
        QCOMPARE(shell.menus.minimumWidth, 180);
        QCOMPARE(shell.menus.anchor, QRect(900, 2, 24, 24));
    }

    void aMenuThatTheDesktopOpensClosesAtOnce()
    {
        Shell shell;
        shell.launch();
        shell.click();
        shell.item.events.menuAboutToShow();
        QVERIFY(shell.panels.visible().empty());
        QVERIFY(shell.menus.menus.empty());
    }

    void onlyKeysOpenAPopoverThatTakesTheKeyboard()
    {
        Shell shell;
        shell.launch();
        shell.click();
        QVERIFY(!shell.popover().options.takesKeyboard);
        QCOMPARE(shell.popover().view.properties.value(u"takesKeyboard"_s), QVariant(false));
        QCOMPARE(shell.popover().keyboardRequests, 0);
        shell.controller->showPopoverForKeyboard(); // It is open: it only gets the keyboard.
        QCOMPARE(shell.panels.visible().size(), size_t{1});
        QCOMPARE(shell.popover().keyboardRequests, 1);

        shell.item.events.activatedByKeys();
        QCOMPARE(shell.closeRequests(), 1);
        shell.fakes.time.pass(250ms);
        QVERIFY(shell.panels.visible().empty());
        shell.item.events.activatedByKeys();
        QVERIFY(shell.popover().options.takesKeyboard);
        QCOMPARE(shell.popover().view.properties.value(u"takesKeyboard"_s), QVariant(true));
        QCOMPARE(shell.popover().keyboardRequests, 1);
    }

    void keysOpenANewPopoverWhileOneIsClosing()
    {
        Shell shell;
        shell.launch();
        shell.controller->showPopoverForKeyboard();
        shell.popover().options.cancelled();
        shell.fakes.time.pass(100ms);
        shell.controller->showPopoverForKeyboard();
        QCOMPARE(shell.panels.visible().size(), size_t{1});
        shell.fakes.time.pass(1s);
        QCOMPARE(shell.panels.visible().size(), size_t{1});
        QCOMPARE(shell.popover().keyboardRequests, 1);
        shell.popover().options.cancelled();
        shell.fakes.time.pass(250ms);
        QVERIFY(shell.panels.visible().empty());
    }

    void escapeClosesWithAnimation()
    {
        Shell shell;
        shell.launch();
        shell.click();
        shell.popover().options.cancelled();
        QCOMPARE(shell.closeRequests(), 1);
        shell.fakes.time.pass(250ms);
        QVERIFY(shell.panels.visible().empty());
    }

    void pressesCloseThePopoverOnlyOutside_data()
    {
        QTest::addColumn<QPoint>("position");
        QTest::addColumn<bool>("inPopover");
        QTest::addColumn<int>("closes");
        QTest::newRow("another program") << QPoint(20, 700) << false << 1;
        QTest::newRow("the popover") << QPoint(800, 100) << true << 0;
        QTest::newRow("the icon") << QPoint(905, 10) << false << 0;
    }

    void pressesCloseThePopoverOnlyOutside()
    {
        QFETCH(QPoint, position);
        QFETCH(bool, inPopover);
        QFETCH(int, closes);
        Shell shell;
        shell.launch();
        shell.click();
        shell.pointer.press({position, inPopover ? shell.popover().windowId : 0});
        QCOMPARE(shell.closeRequests(), closes);
    }

    void twoOutsidePressesCloseOnce()
    {
        Shell shell;
        shell.launch();
        shell.click();
        shell.pointer.press({QPoint(20, 700), 0});
        shell.pointer.press({QPoint(20, 700), 0});
        QCOMPARE(shell.closeRequests(), 1);
    }

    // Growing

    void aResultGrowsAnOpenPopoverDownwards()
    {
        Shell shell;
        shell.launch();
        shell.click();
        const QRect old = shell.popover().frame;
        shell.appState().record(someResult);

        QCOMPARE(shell.popover().frame, QRect(old.topLeft(), QSize(306, 536)));
        QCOMPARE(shell.popover().frameChanges, QStringList({u"at once"_s, u"animated"_s}));
    }

    void theEdgeThatFacesTheIconStaysWhenThePopoverGrows_data()
    {
        QTest::addColumn<QRect>("icon");
        QTest::addColumn<QRect>("workArea");
        QTest::addColumn<QRect>("grown");
        QTest::newRow("bottom panel")
            << QRect(600, 772, 24, 28) << QRect(0, 0, 1280, 772) << QRect(459, 228, 306, 536);
        QTest::newRow("left panel") << QRect(0, 700, 28, 24) << QRect(28, 0, 1252, 800)
                                    << QRect(36, 256, 306, 536);
        QTest::newRow("right panel") << QRect(1252, 10, 28, 24) << QRect(0, 0, 1252, 800)
                                     << QRect(938, 8, 306, 536);
    }

    void theEdgeThatFacesTheIconStaysWhenThePopoverGrows()
    {
        QFETCH(QRect, icon);
        QFETCH(QRect, workArea);
        Shell shell;
        shell.item.place = icon;
        shell.screens.workArea = workArea;
        shell.launch();
        shell.click();
        shell.item.place = QRect(0, 0, 1, 1); // Clicked meanwhile, or not known any more.
        shell.appState().record(someResult);
        QTEST(shell.popover().frame, "grown");
    }

    void aResultLeavesAClosingPopoverAsItIs()
    {
        Shell shell;
        shell.launch();
        shell.click();
        shell.pointer.press({QPoint(20, 700), 0});
        shell.appState().record(someResult);
        QCOMPARE(shell.popover().frame.height(), 386);
    }

    // Menu

    void theMenuHasItsEntriesInOrder()
    {
        Shell shell;
        shell.launch();
        QCOMPARE(shell.menuTitles(),
                 QStringList({u"Pause Cleaning"_s, u"Start at Login"_s, QString(), u"History"_s,
                              u"Settings"_s, QString(), u"Quit Velmora"_s}));
    }

    void theGermanMenuOfAPausedProgramWithUpdates()
    {
        Shell shell(true);
        shell.launch();
        shell.appState().setLanguage(AppLanguage::german);
        shell.appState().setAutoCleanEnabled(false);
        shell.appState().setLaunchAtLoginEnabled(true);

        QCOMPARE(
            shell.menuTitles(),
            QStringList({u"Bereinigung fortsetzen"_s, u"Beim Login starten"_s, QString(), u"Verlauf"_s,
                         u"Einstellungen"_s, u"Nach Updates suchen..."_s, QString(), u"Velmora beenden"_s}));
        QCOMPARE(shell.item.menu[1].check, StatusMenuEntry::Check::on);
        QCOMPARE(shell.item.menu[0].check, StatusMenuEntry::Check::none);
    }

    void aChangeOfTheLanguageAloneChangesMenuAndTooltip()
    {
        Shell shell;
        shell.launch();
        shell.appState().setLanguage(AppLanguage::german);
        QCOMPARE(shell.menuTitles().constFirst(), u"Bereinigung pausieren"_s);
        QCOMPARE(shell.item.toolTip, u"Velmora \u00b7 Aktiv \u00b7 0 links bereinigt"_s);
    }

    void eachEntryDoesItsWork()
    {
        Shell shell(true);
        shell.launch();
        shell.choose(u"Pause Cleaning"_s);
        QVERIFY(!shell.appState().autoCleanEnabled());
        shell.choose(u"Resume Cleaning"_s);
        QVERIFY(shell.appState().autoCleanEnabled());
        QCOMPARE(shell.item.menu[1].check, StatusMenuEntry::Check::off);
        shell.choose(u"Start at Login"_s);
        QCOMPARE(shell.fakes.loginItem.calls, QStringList(u"register"_s));
        QCOMPARE(shell.item.menu[1].check, StatusMenuEntry::Check::on);
        shell.choose(u"History"_s);
        shell.choose(u"Settings"_s);
        QCOMPARE(shell.presenter->tabs, QStringList({u"history"_s, u"general"_s}));
        shell.choose(u"Check for Updates..."_s);
        QCOMPARE(shell.updateChecks, 1);
        shell.choose(u"Quit Velmora"_s);
        QCOMPARE(shell.terminations, 1);
    }

    void theHistoryButtonClosesThePopoverAndOpensTheHistory()
    {
        Shell shell;
        shell.launch();
        shell.click();
        shell.popover().request("openHistory");
        QCOMPARE(shell.closeRequests(), 1);
        QCOMPARE(shell.presenter->tabs, QStringList(u"history"_s));
    }

    void withoutAWindowPresenterTheWindowEntriesDoNothing()
    {
        Shell shell;
        shell.launch();
        shell.presenter = nullptr;
        shell.choose(u"History"_s);
        shell.choose(u"Settings"_s);
        QVERIFY(shell.controller != nullptr);
    }

    void nothingRunsAfterTheControllerIsGone()
    {
        Shell shell;
        shell.launch();
        shell.click();
        shell.appState().record(someResult);
        shell.controller = nullptr;
        shell.item.log.clear();
        shell.fakes.time.pass(10s);
        QVERIFY(shell.item.log.isEmpty());
        QVERIFY(!shell.pointer.isListening());
    }
};

static const RegisteredTest<StatusBarControllerTests> registered;
#include "StatusBarControllerTests.moc"
