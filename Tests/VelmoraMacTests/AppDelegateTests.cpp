#include <VelmoraMac/AppDelegate.h>

#include <QTest>

#include <Fakes/FakeAppWindows.h>
#include <Fakes/FakeDesktop.h>
#include <Fakes/FakeHttpsClient.h>
#include <Fakes/FakePanels.h>
#include <Fakes/FakeServices.h>
#include <Fakes/FakeStatusItem.h>
#include <Fakes/FakeSurroundings.h>
#include <Fakes/FakeSystemLanguage.h>
#include <Fakes/RecordingNotifications.h>
#include <Runner/RegisteredTest.h>

#include <optional>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

class FakeInstance final : public ApplicationInstance {
public:
    [[nodiscard]] Role claim() override { return Role::first; }

    void setReopenHandler(ReopenHandler) override {}

    void setActionHandler(ActionHandler) override {}
};

// The whole application on a desktop of fakes.
struct Application {
    Application() { https.replies.assign(20, 200); }

    FakeServices fakes;
    FakeHttpsClient https{fakes.time};
    FakeSystemLanguage language;
    FakeInstance instance;
    FakeStatusItem item;
    PlainWindowManager windowManager;
    FakePointerMonitor pointer;
    FakeScreens screens;
    PlainAppearance appearance;
    RecordingNotifications userNotifications;
    int terminations = 0;
    FakePanels panels;
    FakeAppWindows windows;
    FakeMenuPresenter menus;
    NotificationCenter notifications;
    TelemetryService telemetry{{.defaults = fakes.defaults,
                                .https = https,
                                .scheduler = fakes.time,
                                .clock = fakes.time.wallClock(),
                                .bundle = fakes.bundle,
                                .endpoint = QUrl(u"https://events.example/e"_s)}};
    Platform platform{.bundle = fakes.bundle,
                      .defaults = fakes.defaults,
                      .pasteboard = fakes.pasteboard,
                      .scheduler = fakes.time,
                      .clock = fakes.time.wallClock(),
                      .language = language,
                      .https = https,
                      .loginItem = fakes.loginItem,
                      .makeUpdater = {},
                      .instance = instance,
                      .statusItem = item,
                      .windows = windowManager,
                      .pointer = pointer,
                      .screens = screens,
                      .appearance = appearance,
                      .notifications = userNotifications};
    std::shared_ptr<AppDelegate> delegate = std::make_shared<AppDelegate>(
        platform, AppDelegate::Dependencies{.telemetry = telemetry,
                                            .notifications = notifications,
                                            .panels = panels,
                                            .windows = windows,
                                            .menus = menus,
                                            .statusItemImage = QImage(),
                                            .terminate = [this] { ++terminations; }});

    QStringList events() const
    {
        QStringList names;
        for (const TelemetryEnvelope &envelope : telemetry.queue())
            names.append(envelope.name);
        return names;
    }

    QString shownTab() const { return rawValue(delegate->appState().activeAppTab()); }
};

} // namespace

class AppDelegateTests : public QObject {
    Q_OBJECT

private Q_SLOTS:

    void launchingShowsTheIconWatchesTheClipboardAndReportsOnce()
    {
        Application app;
        QVERIFY(!app.item.events.activated);
        app.delegate->applicationDidFinishLaunching();

        QVERIFY(app.item.events.activated);
        QCOMPARE(app.events(), QStringList({u"app_first_launch"_s, u"app_opened"_s}));
        QVERIFY(app.windows.log.isEmpty());
        app.fakes.pasteboard.copy("https://a.example/?utm_source=x");
        app.fakes.time.pass(220ms);
        QCOMPARE(app.fakes.pasteboard.contents(), std::optional<std::string>("https://a.example/"));
        QCOMPARE(app.panels.visible().size(), size_t{1});
    }

    void whatIsOnTheClipboardAtLaunchStays()
    {
        Application app;
        app.fakes.pasteboard.copy("https://a.example/?utm_source=x");
        app.delegate->applicationDidFinishLaunching();
        app.fakes.time.pass(1s);
        QVERIFY(app.fakes.pasteboard.written.empty());
    }

    void reopeningBringsAHiddenIconBackAndOpensTheGeneralTab()
    {
        Application app;
        app.delegate->applicationDidFinishLaunching();
        app.delegate->showAppWindow(AppTab::history);
        app.item.setVisible(false);
        app.delegate->applicationShouldHandleReopen();

        QVERIFY(app.item.visible);
        QVERIFY(app.windows.visible);
        QCOMPARE(app.shownTab(), u"general"_s);
    }

    void theIconComesBackBeforeTheWindow()
    {
        Application app;
        app.delegate->applicationDidFinishLaunching();
        app.item.setVisible(false);
        std::optional<bool> isIconBack;
        app.windows.aboutToCome = [&] { isIconBack = app.item.visible; };
        app.delegate->applicationShouldHandleReopen();
        QCOMPARE(isIconBack, std::optional(true));
    }

    void theSettingsAreReportedBeforeTheyAreShown()
    {
        Application app;
        app.delegate->applicationDidFinishLaunching();
        QString latest;
        app.windows.aboutToCome = [&] { latest = app.events().constLast(); };
        app.delegate->showAppWindow(AppTab::cleaning);
        QCOMPARE(latest, u"settings_opened"_s);
    }

    void aSecondRequestChangesTheTabAndDoesNotCentreAgain()
    {
        Application app;
        app.delegate->applicationDidFinishLaunching();
        app.delegate->showAppWindow(AppTab::general);
        app.delegate->showAppWindow(AppTab::cleaning);

        QCOMPARE(app.shownTab(), u"cleaning"_s);
        QCOMPARE(app.windows.log,
                 QStringList({u"made"_s, u"centred"_s, u"to the front"_s, u"to the front"_s}));
        QCOMPARE(app.events().count(u"settings_opened"_s), 2);
    }

    void withoutAPlaceForIconsTheUserIsToldOnceInTheirLanguage()
    {
        Application app;
        app.item.place = std::nullopt;
        app.delegate->appState().setLanguage(AppLanguage::german);
        app.delegate->applicationDidFinishLaunching();
        app.fakes.time.pass(9999ms);
        QVERIFY(app.userNotifications.messages.empty());
        app.fakes.time.pass(1ms);
        QCOMPARE(app.userNotifications.messages.size(), size_t{1});
        QCOMPARE(app.userNotifications.messages[0].title, u"Velmora läuft"_s);
        QVERIFY(app.userNotifications.messages[0].text.contains(u"unter GNOME mit der Erweiterung"_s));
        app.fakes.time.pass(1h);
        QCOMPARE(app.userNotifications.messages.size(), size_t{1});

        QVERIFY(!app.windows.visible);
        app.userNotifications.messages[0].activated();
        QVERIFY(app.windows.visible);
        QCOMPARE(app.shownTab(), u"general"_s);
    }

    void anIconThatComesLateIsNoReasonToTell()
    {
        Application app;
        const auto place = std::exchange(app.item.place, std::nullopt);
        app.delegate->applicationDidFinishLaunching();
        app.fakes.time.pass(9s);
        app.item.place = place;
        app.fakes.time.pass(1min);
        QVERIFY(app.userNotifications.messages.empty());
    }

    void theActionsOfTheDesktopEntryDoWhatTheySay()
    {
        Application app;
        app.delegate->applicationDidFinishLaunching();
        app.delegate->applicationShouldPerform(ApplicationInstance::Action::settings);
        QVERIFY(app.windows.visible);
        QCOMPARE(app.shownTab(), u"general"_s);
        app.delegate->applicationShouldPerform(ApplicationInstance::Action::popover);
        QCOMPARE(app.panels.visible().size(), size_t{1});
        QCOMPARE(app.panels.visible().front()->keyboardRequests, 1);
        app.delegate->applicationShouldPerform(ApplicationInstance::Action::pauseOrResume);
        QVERIFY(!app.delegate->appState().autoCleanEnabled());
        app.delegate->applicationShouldPerform(ApplicationInstance::Action::pauseOrResume);
        QVERIFY(app.delegate->appState().autoCleanEnabled());
        QCOMPARE(app.terminations, 0);
        app.delegate->applicationShouldPerform(ApplicationInstance::Action::quit);
        QCOMPARE(app.terminations, 1);
    }

    void aLinkThatAWarningAsksAboutIsCleanedByAnAction()
    {
        Application app;
        app.delegate->applicationDidFinishLaunching();
        app.delegate->appState().setAskBeforeCleaningEnabled(true);
        const std::optional<std::string> tracked = "https://a.example/?utm_source=x";
        app.fakes.pasteboard.copy(*tracked);
        app.delegate->applicationShouldPerform(ApplicationInstance::Action::cleanLink);
        app.fakes.time.pass(1s);
        QCOMPARE(app.fakes.pasteboard.contents(), tracked); // It had not asked yet.
        app.delegate->applicationShouldPerform(ApplicationInstance::Action::cleanLink);
        app.fakes.time.pass(1s);
        QCOMPARE(app.fakes.pasteboard.contents(), std::optional<std::string>("https://a.example/"));
        QVERIFY(app.panels.visible().empty());
    }

    void closingTheWindowLeavesTheIconInPlace()
    {
        Application app;
        app.delegate->applicationDidFinishLaunching();
        app.delegate->showAppWindow(AppTab::general);
        app.windows.visible = false;
        QVERIFY(app.item.visible);
        QVERIFY(app.item.events.activated);
    }

    void quittingReportsAndPlansAFlushAFifthOfASecondLater()
    {
        Application app;
        app.delegate->applicationDidFinishLaunching();
        app.fakes.time.pass(10s); // The launch events have been sent.
        const auto before = app.https.requests.size();
        app.delegate->applicationShouldTerminate();
        QCOMPARE(app.events(), QStringList(u"app_quit"_s));

        app.fakes.time.pass(199ms);
        QCOMPARE(app.https.requests.size(), before);
        app.fakes.time.pass(1ms);
        QCOMPARE(app.https.requests.size(), before + 1);
    }
};

static const RegisteredTest<AppDelegateTests> registered;
#include "AppDelegateTests.moc"
