#include <QSignalSpy>
#include <QTest>

#include <Rehearsal/ItemTree.h>
#include <Rehearsal/Scenes.h>
#include <Runner/RegisteredTest.h>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

constexpr QSize tall(660, 1200); // The whole general tab, without scrolling.

const QStringList generalInEnglish = {
    u"Behavior"_s,
    u"Auto-clean copied links"_s,
    u"Ask before cleaning"_s,
    u"Show a warning first and clean only when you confirm."_s,
    u"Start at Login"_s,
    u"Available in the bundled signed app."_s,
    u"Show Menu Bar Icon"_s,
    u"Use this if the Velmora icon was hidden or removed from the menu bar."_s,
    u"Language"_s,
    u"App language"_s,
    u"System"_s,
    u"English"_s,
    u"German"_s,
    u"Design"_s,
    u"Theme"_s,
    u"Privacy"_s,
    u"Share anonymous usage data"_s,
    u"Sends sparse app events only. Links, domains and clipboard contents are never sent."_s,
    u"Stats"_s,
    u"Links cleaned"_s,
    u"1284"_s,
    u"Cleaned today"_s,
    u"17"_s,
    u"Trackers removed"_s,
    u"5071"_s,
    u"App Info"_s,
    u"Version"_s,
    u"0.1.9"_s,
    u"Build"_s,
    u"10"_s,
    u"Minimum macOS"_s,
    u"14.0"_s,
    u"Updates"_s,
    u"Automatic updates will be enabled after signing keys and the appcast are configured."_s,
    u"Check for Updates..."_s};

const QStringList generalInGerman = {
    u"Verhalten"_s,
    u"Kopierte Links automatisch bereinigen"_s,
    u"Vor dem Bereinigen fragen"_s,
    u"Erst warnen und nur nach Bestätigung bereinigen."_s,
    u"Beim Login starten"_s,
    u"Verfügbar in der signierten App."_s,
    u"Menüleisten-Icon anzeigen"_s,
    u"Nutze das, wenn das Velmora-Icon ausgeblendet oder aus der Menüleiste entfernt wurde."_s,
    u"Sprache"_s,
    u"App-Sprache"_s,
    u"System"_s,
    u"Englisch"_s,
    u"Deutsch"_s,
    u"Design"_s,
    u"Theme"_s,
    u"Datenschutz"_s,
    u"Anonyme Nutzungsdaten teilen"_s,
    u"Sendet nur sparsame App-Ereignisse. Links, Domains und Clipboard-Inhalte werden nie gesendet."_s,
    u"Statistiken"_s,
    u"Links bereinigt"_s,
    u"1284"_s,
    u"Heute bereinigt"_s,
    u"17"_s,
    u"Tracker entfernt"_s,
    u"5071"_s,
    u"App-Info"_s,
    u"Version"_s,
    u"0.1.9"_s,
    u"Build"_s,
    u"10"_s,
    u"Minimum macOS"_s,
    u"14.0"_s,
    u"Updates"_s,
    u"Automatische Updates werden aktiviert, sobald Signier-Key und Appcast eingerichtet sind."_s,
    u"Nach Updates suchen..."_s};

// `texts` with the names of all themes where they are offered.
QStringList withThemes(QStringList texts, AppLanguage language)
{
    qsizetype place = texts.indexOf(u"Theme"_s) + 1;
    for (const int theme : Surroundings::themes())
        texts.insert(place++, Surroundings::themeName(static_cast<VelmoraTheme>(theme), language));
    return texts;
}

const QStringList tabsInEnglish = {u"General"_s, u"Cleaning"_s, u"History"_s};
const QStringList tabsInGerman = {u"Allgemein"_s, u"Bereinigung"_s, u"Verlauf"_s};

} // namespace

class SettingsViewTests : public QObject {
    Q_OBJECT

    static void press(Stage &stage, const QString &name)
    {
        QQuickItem *control = ItemTree::control(*stage.window()->rootObject(), name);
        QVERIFY2(control != nullptr, qPrintable(name));
        QTest::mouseClick(stage.window(), Qt::LeftButton, {}, ItemTree::middle(*control));
    }

    // The texts without those of the tabs, whatever the order in which they are drawn.
    static QStringList page(const QQuickItem &settings, const QStringList &tabs)
    {
        QStringList texts = ItemTree::texts(settings);
        for (const QString &tab : tabs)
            texts.removeOne(tab);
        return texts;
    }

private Q_SLOTS:

    void initTestCase()
    {
        prepareFont(u"Inter"_s);
        QAccessible::setActive(true);
    }

    void everyLabelOfTheGeneralTabChangesLanguageAtOnce()
    {
        Stage stage(everydaySetup());
        QQuickItem *settings = stage.showSettings(AppTab::general, tall);
        QVERIFY2(settings != nullptr, qPrintable(stage.warnings.join(u'\n')));
        QCOMPARE(page(*settings, tabsInEnglish), withThemes(generalInEnglish, AppLanguage::english));

        press(stage, u"German"_s);

        QCOMPARE(stage.state->language(), AppLanguage::german);
        QCOMPARE(page(*settings, tabsInGerman), withThemes(generalInGerman, AppLanguage::german));
        QCOMPARE(stage.warnings, QStringList());
    }

    void theCleaningTabInBothLanguages()
    {
        Stage stage({});
        QQuickItem *settings = stage.showSettings(AppTab::cleaning);
        QCOMPARE(page(*settings, tabsInEnglish),
                 QStringList(
                     {u"Rules"_s,
                      u"Removes utm_*, fbclid, gclid, msclkid, twclid, mc_cid and common share tokens."_s,
                      u"Ignored Domains"_s, u"One domain per line. Velmora leaves these links untouched."_s,
                      u"Ignore last domain"_s}));

        stage.state->setLanguage(AppLanguage::german);

        QCOMPARE(
            page(*settings, tabsInGerman),
            QStringList(
                {u"Regeln"_s,
                 u"Entfernt utm_*, fbclid, gclid, msclkid, twclid, mc_cid und gängige Share-Tokens."_s,
                 u"Ignorierte Domains"_s, u"Eine Domain pro Zeile. Velmora lässt diese Links unverändert."_s,
                 u"Letzte Domain ignorieren"_s}));
    }

    void theHistoryTabWithoutEntriesInBothLanguages()
    {
        Stage stage({});
        QQuickItem *settings = stage.showSettings(AppTab::history);
        QCOMPARE(page(*settings, tabsInEnglish),
                 QStringList({u"Link History"_s, u"Local on this Mac."_s, u"Clear History"_s,
                              u"No cleaned links yet"_s, u"Cleaned links appear here."_s}));

        stage.state->setLanguage(AppLanguage::german);

        QCOMPARE(page(*settings, tabsInGerman),
                 QStringList({u"Link-Verlauf"_s, u"Lokal auf diesem Mac."_s, u"Verlauf leeren"_s,
                              u"Noch keine Links"_s, u"Bereinigte Links erscheinen hier."_s}));
        press(stage, u"Verlauf leeren"_s);
        QVERIFY(ItemTree::texts(*settings).contains(u"Noch keine Links"_s));
    }

    void theTabFollowsTheStateAndThePointer()
    {
        Stage stage({});
        QQuickItem *settings = stage.showSettings(AppTab::general);

        stage.state->setActiveAppTab(AppTab::history);
        stage.pass(16ms);
        QVERIFY(ItemTree::texts(*settings).contains(u"Link History"_s));

        press(stage, u"Cleaning"_s);
        QCOMPARE(stage.state->activeAppTab(), AppTab::cleaning);
        QVERIFY(ItemTree::texts(*settings).contains(u"Rules"_s));
    }

    void theKeyboardTurnsTabs()
    {
        Stage stage({});
        stage.showSettings(AppTab::general);
        QTest::keyClick(stage.window(), Qt::Key_Tab);

        QTest::keyClick(stage.window(), Qt::Key_Right);
        QCOMPARE(stage.state->activeAppTab(), AppTab::cleaning);
        QTest::keyClick(stage.window(), Qt::Key_Left);
        QTest::keyClick(stage.window(), Qt::Key_Left);
        QCOMPARE(stage.state->activeAppTab(), AppTab::general);
    }

    void everySwitchWritesItsSetting()
    {
        Stage stage({});
        stage.showSettings(AppTab::general, tall);

        press(stage, u"Auto-clean copied links"_s);
        press(stage, u"Ask before cleaning"_s);
        press(stage, u"Start at Login"_s);
        press(stage, u"Share anonymous usage data"_s);
        press(stage, u"Ocean"_s);

        QVERIFY(!stage.state->autoCleanEnabled());
        QVERIFY(stage.state->askBeforeCleaningEnabled());
        QVERIFY(stage.state->launchAtLoginEnabled());
        QVERIFY(!stage.state->telemetryEnabled());
        QCOMPARE(stage.state->appTheme(), VelmoraTheme::ocean);
    }

    void aSwitchStaysTiedToItsSetting()
    {
        Stage stage({});
        QQuickItem *settings = stage.showSettings(AppTab::general, tall);
        press(stage, u"Ask before cleaning"_s);

        stage.state->setAskBeforeCleaningEnabled(false);

        QVERIFY(!ItemTree::control(*settings, u"Ask before cleaning"_s)->property("checked").toBool());
    }

    void showMenuBarIconAsksForIt()
    {
        Stage stage({});
        stage.showSettings(AppTab::general, tall);
        QSignalSpy posted(&stage.notifications, &NotificationCenter::posted);

        press(stage, u"Show Menu Bar Icon"_s);

        QCOMPARE(posted.size(), 1);
        QCOMPARE(posted.first().first().toString(), u"VelmoraRestoreMenuBarIcon"_s);
    }

    void aProblemIsToldBesideStartAtLogin()
    {
        Stage stage({}); // Without a bundle identifier.
        QQuickItem *settings = stage.showSettings(AppTab::general, tall);

        press(stage, u"Start at Login"_s);

        QVERIFY(!stage.state->lastError().isEmpty());
        QVERIFY(ItemTree::texts(*settings).contains(stage.state->lastError()));
    }

    // Whether one of the texts on screen begins like this.
    static bool isTold(QQuickItem &settings, const QString &beginning)
    {
        const QStringList texts = ItemTree::texts(settings);
        return std::any_of(texts.begin(), texts.end(),
                           [&](const QString &text) { return text.startsWith(beginning); });
    }

    void whatLastsIsToldInTheLanguageOfTheMomentUntilItEnds_data()
    {
        QTest::addColumn<QString>("condition");
        QTest::addColumn<QString>("english");
        QTest::addColumn<QString>("german");
        QTest::newRow("not saved") << u"not saved"_s << u"Settings cannot be saved"_s
                                   << u"Einstellungen können nicht gespeichert werden"_s;
        QTest::newRow("set aside") << u"set aside"_s << u"The settings file was damaged."_s
                                   << u"Die Einstellungsdatei war beschädigt."_s;
        QTest::newRow("no clipboard") << u"no clipboard"_s << u"Velmora cannot reach the clipboard"_s
                                      << u"Velmora erreicht die Zwischenablage dieser Sitzung nicht"_s;
        QTest::newRow("only X11") << u"only X11"_s << u"This desktop shows Velmora only"_s
                                  << u"Dieser Desktop zeigt Velmora nur"_s;
    }

    void whatLastsIsToldInTheLanguageOfTheMomentUntilItEnds()
    {
        QFETCH(QString, condition);
        QFETCH(QString, english);
        QFETCH(QString, german);
        Stage stage({});
        QQuickItem *settings = stage.showSettings(AppTab::general, tall);
        QVERIFY(!isTold(*settings, english));

        if (condition == u"not saved"_s)
            stage.fakes.defaults.fail(DefaultsStore::Problem::notWritable);
        else if (condition == u"set aside"_s)
            stage.fakes.defaults.fail(DefaultsStore::Problem::setAside);
        else
            stage.fakes.pasteboard.setReach(condition == u"only X11"_s ? Pasteboard::Reach::onlyX11
                                                                       : Pasteboard::Reach::none);
        QVERIFY(isTold(*settings, english));
        stage.state->setLanguage(AppLanguage::german);
        QVERIFY(isTold(*settings, german));

        stage.fakes.defaults.recover();
        stage.fakes.pasteboard.setReach(Pasteboard::Reach::all);
        QCOMPARE(isTold(*settings, german), condition == u"set aside"_s);
    }

    void ignoredDomainsAreWrittenAsTheyAreTyped()
    {
        Stage stage({});
        QQuickItem *settings = stage.showSettings(AppTab::cleaning);
        QQuickItem *editor = ItemTree::control(*settings, u"Ignored Domains"_s);
        QVERIFY(editor != nullptr);
        QVERIFY(editor->height() >= 160);
        QTest::mouseClick(stage.window(), Qt::LeftButton, {}, ItemTree::middle(*editor));

        for (const char letter : {'a', '.', 'b'})
            QTest::keyClick(stage.window(), letter);
        QCOMPARE(stage.state->ignoredDomainsText(), u"a.b"_s);
        stage.state->setIgnoredDomainsText(u"a.example\nb.example"_s);

        QCOMPARE(editor->property("text").toString(), u"a.example\nb.example"_s);
    }

    void openingTheCleaningTabWritesNothing()
    {
        Stage stage({});
        const QString stored = u"a.example\r\nb.example\u2028c.example\r"_s;
        stage.state->setIgnoredDomainsText(stored);
        stage.fakes.defaults.writes.clear();
        QQuickItem *settings = stage.showSettings(AppTab::cleaning);
        stage.pass(100ms);
        QCOMPARE(stage.fakes.defaults.writes, QStringList());
        QCOMPARE(stage.state->ignoredDomainsText(), stored);

        QTest::mouseClick(stage.window(), Qt::LeftButton, {},
                          ItemTree::middle(*ItemTree::control(*settings, u"Ignored Domains"_s)));
        QTest::keyClick(stage.window(), 'x');
        QCOMPARE(stage.fakes.defaults.writes, QStringList(u"ignoredDomainsText"_s));
    }

    void theHistoryShowsNewestFirstAndIsClearedAtOnce()
    {
        Stage stage({});
        fillHistory(stage, 30);
        QQuickItem *settings = stage.showSettings(AppTab::history);
        stage.pass(16ms);
        const QStringList texts = ItemTree::texts(*settings);
        QVERIFY(texts.contains(u"https://news.example.org/2026/03/story-1"_s));
        QVERIFY(!texts.contains(u"No cleaned links yet"_s));
        const auto rows = settings->findChildren<QQuickItem *>(u"historyRow"_s);
        QVERIFY2(rows.size() < 12, "rows out of sight are not made");

        press(stage, u"Clear History"_s);

        QVERIFY(stage.state->historyEntries().isEmpty());
        QVERIFY(ItemTree::texts(*settings).contains(u"No cleaned links yet"_s));
    }

    void everyControlHasANameAndCanBePressed_data()
    {
        QTest::addColumn<Velmora::AppTab>("tab");
        QTest::addColumn<int>("controls");
        QTest::newRow("general") << AppTab::general << 3 + 4 + 1 + 3 + 4 + 1;
        QTest::newRow("cleaning") << AppTab::cleaning << 3 + 1 + 1;
        QTest::newRow("history") << AppTab::history << 3 + 1 + 3;
    }

    void everyControlHasANameAndCanBePressed()
    {
        QFETCH(Velmora::AppTab, tab);
        QFETCH(int, controls);
        Stage stage({});
        fillHistory(stage, 1);
        stage.showSettings(tab, tall);
        stage.pass(16ms);

        const auto found = ItemTree::controls(*stage.window());
        for (const auto &control : found) {
            QVERIFY2(!control.name.isEmpty(), qPrintable(control.type));
            QVERIFY2(control.canBePressed || control.role == QAccessible::EditableText,
                     qPrintable(control.name));
        }
        QCOMPARE(static_cast<int>(found.size()), controls);
    }
};

static const RegisteredGuiTest<SettingsViewTests> registered;
#include "SettingsViewTests.moc"
