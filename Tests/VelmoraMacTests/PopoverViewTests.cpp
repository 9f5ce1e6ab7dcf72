#include <QSignalSpy>
#include <QTest>

#include <Rehearsal/ItemTree.h>
#include <Rehearsal/Scenes.h>
#include <Runner/RegisteredTest.h>

#include <array>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

// The revealed elements, in the order of their reveal.
constexpr std::array reveals = {"shellVisible", "headerVisible", "heroVisible", "statsVisible",
                                "lastVisible"};

QString shown(const QQuickItem &popover)
{
    QString flags;
    for (const char *reveal : reveals)
        flags += popover.property(reveal).toBool() ? u'1' : u'0';
    return flags;
}

const CleaningResult unchanged{u"https://a.example/"_s, u"https://a.example/"_s, {}};

} // namespace

class PopoverViewTests : public QObject {
    Q_OBJECT

private Q_SLOTS:

    void initTestCase()
    {
        prepareFont(u"Inter"_s);
        QAccessible::setActive(true);
    }

    void theHeroSaysHowThingsStand_data()
    {
        QTest::addColumn<bool>("cleans");
        QTest::addColumn<QVariant>("result");
        QTest::addColumn<QStringList>("english");
        QTest::addColumn<QStringList>("german");
        QTest::addColumn<QStringList>("symbols");
        const QVariant none;
        const QVariant cleaned = QVariant::fromValue(shopResult());
        const QVariant same = QVariant::fromValue(unchanged);

        QTest::newRow("paused wins over everything")
            << false << cleaned << QStringList{u"Paused"_s, u"Cleaning is paused"_s}
            << QStringList{u"Pausiert"_s, u"Bereinigung pausiert"_s}
            << QStringList{u"pause.circle.fill"_s, u"pause.fill"_s};
        QTest::newRow("a link was cleaned") << true << cleaned << QStringList{u"Cleaned"_s, u"3 removed"_s}
                                            << QStringList{u"Bereinigt"_s, u"3 entfernt"_s}
                                            << QStringList{u"checkmark.circle.fill"_s, u"sparkles"_s};
        QTest::newRow("a result that changed nothing")
            << true << same << QStringList{u"Protected"_s, u"0 removed"_s}
            << QStringList{u"Geschützt"_s, u"0 entfernt"_s}
            << QStringList{u"checkmark.shield.fill"_s, u"lock.fill"_s};
        QTest::newRow("nothing yet") << true << none << QStringList{u"Protected"_s, u"Local on this Mac"_s}
                                     << QStringList{u"Geschützt"_s, u"Lokal auf diesem Mac"_s}
                                     << QStringList{u"checkmark.shield.fill"_s, u"lock.fill"_s};
    }

    void theHeroSaysHowThingsStand()
    {
        QFETCH(bool, cleans);
        QFETCH(QVariant, result);
        QFETCH(QStringList, english);
        QFETCH(QStringList, german);
        QFETCH(QStringList, symbols);
        Stage stage({});
        if (result.isValid())
            stage.state->record(result.value<CleaningResult>());
        stage.state->setAutoCleanEnabled(cleans);
        QQuickItem *popover = stage.showPopover();
        QVERIFY2(popover != nullptr, qPrintable(stage.warnings.join(u'\n')));
        stage.pass(1s);

        const auto *hero = popover->findChild<QQuickItem *>(u"hero"_s);
        QVERIFY(hero != nullptr);
        QCOMPARE(QStringList(
                     {hero->property("symbolName").toString(), hero->property("microSymbolName").toString()}),
                 symbols);
        QCOMPARE(ItemTree::texts(*hero), english);
        stage.state->setLanguage(AppLanguage::german);
        stage.pass(1s);
        QCOMPARE(ItemTree::texts(*hero), german);
        QCOMPARE(stage.warnings, QStringList());
    }

    void everyTextStandsInItsPlaceInBothLanguages()
    {
        Stage stage(everydaySetup());
        QQuickItem *popover = stage.showPopover();
        stage.pass(1s);

        QCOMPARE(ItemTree::texts(*popover),
                 QStringList({u"Velmora"_s, u"Active"_s,  u"Protected"_s, u"Local on this Mac"_s,
                              u"LINKS"_s,   u"4"_s,       u"8"_s,         u"2"_s,
                              u"1"_s,       u"REMOVED"_s, u"1"_s,         u"7"_s,
                              u"0"_s,       u"5"_s,       u"HEUTE"_s,     u"7"_s,
                              u"1"_s,       u"Last"_s,    u"Verlauf"_s,   u"Waiting for link"_s}));
        stage.state->setLanguage(AppLanguage::german);
        stage.pass(1s);
        const QStringList german = ItemTree::texts(*popover);
        for (const QString &text : {u"Aktiv"_s, u"Geschützt"_s, u"ENTFERNT"_s, u"HEUTE"_s, u"Zuletzt"_s,
                                    u"Verlauf"_s, u"Warte auf Link"_s})
            QVERIFY2(german.contains(text), qPrintable(text));
    }

    void theCardSaysPausedWhateverTheLastResultIs()
    {
        Stage stage({});
        stage.state->record(shopResult());
        QQuickItem *popover = stage.showPopover();
        stage.pass(1s);
        const QStringList cleaning = ItemTree::texts(*popover);
        QVERIFY(cleaning.contains(u"BEFORE"_s) && cleaning.contains(u"AFTER"_s));

        stage.state->setAutoCleanEnabled(false);
        stage.pass(1s);

        const QStringList paused = ItemTree::texts(*popover);
        QCOMPARE(paused.count(u"Cleaning is paused"_s), 2);
        QVERIFY(!paused.contains(u"BEFORE"_s));
    }

    void aLongLinkIsCutToOneLine()
    {
        Stage stage({});
        stage.state->record({longEntry().originalText, longEntry().cleanedText, {u"utm_source"_s}});
        QQuickItem *popover = stage.showPopover();
        stage.pass(1s);

        int links = 0;
        for (const QQuickItem *text : popover->findChildren<QQuickItem *>()) {
            if (!text->inherits("QQuickText") || !text->property("text").toString().startsWith(u"https:"))
                continue;
            ++links;
            QVERIFY(text->property("text").toString().contains(u'\u2026'));
            QCOMPARE(text->property("lineCount").toInt(), 1);
            QVERIFY(text->mapRectToScene(text->boundingRect()).right() <= 306 - 16);
        }
        QCOMPARE(links, 2);
    }

    void nothingIsClippedInGerman()
    {
        for (const bool cleans : {true, false}) {
            Stage stage(everydaySetup());
            stage.state->setLanguage(AppLanguage::german);
            stage.state->setAutoCleanEnabled(cleans);
            QQuickItem *popover = stage.showPopover();
            stage.pass(1s);
            for (const QQuickItem *text : popover->findChildren<QQuickItem *>())
                if (text->inherits("QQuickText"))
                    QVERIFY2(!text->property("truncated").toBool(),
                             qPrintable(text->property("text").toString()));
        }
    }

    void openingRevealsOneAfterTheOther()
    {
        Stage stage({});
        QQuickItem *popover = stage.showPopover();
        QCOMPARE(shown(*popover), u"00000"_s);

        struct Moment {
            std::chrono::milliseconds time;
            QString shown;
        };

        const std::array moments = {
            Moment{1ms, u"10000"_s},   Moment{129ms, u"10000"_s}, Moment{130ms, u"11000"_s},
            Moment{189ms, u"11000"_s}, Moment{190ms, u"11100"_s}, Moment{244ms, u"11100"_s},
            Moment{245ms, u"11110"_s}, Moment{299ms, u"11110"_s}, Moment{300ms, u"11111"_s}};
        auto now = 0ms;
        for (const Moment &moment : moments) {
            stage.pass(moment.time - now);
            now = moment.time;
            QCOMPARE(shown(*popover), moment.shown);
        }
    }

    void closingHidesInReverseAndEndsInTime()
    {
        Stage stage({});
        QQuickItem *popover = stage.showPopover();
        stage.pass(2s);

        stage.popoverAnimation.requestClose();

        QCOMPARE(shown(*popover), u"11110"_s);
        stage.pass(15ms);
        QCOMPARE(shown(*popover), u"11100"_s);
        stage.pass(15ms);
        QCOMPARE(shown(*popover), u"11000"_s);
        stage.pass(15ms);
        QCOMPARE(shown(*popover), u"10000"_s);
        stage.pass(29ms);
        QCOMPARE(shown(*popover), u"10000"_s);
        stage.pass(1ms);
        QCOMPARE(shown(*popover), u"00000"_s);
        stage.pass(175ms); // At 0.25 s the window goes: nothing may be left to see.
        QVERIFY(popover->findChild<QQuickItem *>(u"panel"_s)->opacity() < 0.015);
    }

    void closingWhileOpeningLeavesNothingBehind()
    {
        for (const auto moment : {0ms, 50ms, 150ms, 200ms, 260ms, 310ms}) {
            Stage stage({});
            QQuickItem *popover = stage.showPopover();
            stage.pass(moment);
            stage.popoverAnimation.requestClose();
            stage.pass(2s);
            QCOMPARE(shown(*popover), u"00000"_s);
            QCOMPARE(popover->findChild<QQuickItem *>(u"panel"_s)->opacity(), 0.0);
        }
    }

    void openingWhileClosingShowsEverything()
    {
        Stage stage({});
        QQuickItem *popover = stage.showPopover();
        stage.pass(1s);
        stage.popoverAnimation.requestClose();
        stage.pass(40ms);
        QMetaObject::invokeMethod(popover, "playOpeningAnimation");
        stage.pass(2s);

        QCOMPARE(shown(*popover), u"11111"_s);
        QCOMPARE(popover->findChild<QQuickItem *>(u"panel"_s)->opacity(), 1.0);
    }

    void aCleaningLightsTheSealForAWhile()
    {
        Stage stage({});
        QQuickItem *popover = stage.showPopover();
        stage.pass(1s);
        QVERIFY(!popover->property("glow").toBool());

        stage.fakes.time.pass(1s);
        stage.state->record(shopResult());
        stage.pass(1000ms);
        stage.fakes.time.pass(1s);
        stage.state->record(shopResult()); // A second one during the glow restarts it.
        stage.pass(1149ms);
        QVERIFY(popover->property("glow").toBool());
        stage.pass(1ms);

        QVERIFY(!popover->property("glow").toBool());
    }

    void theSwitchAndTheButtonAreItsOnlyControls()
    {
        Stage stage({});
        QQuickItem *popover = stage.showPopover();
        stage.pass(1s);
        const auto controls = ItemTree::controls(*stage.window());
        QCOMPARE(controls.size(), size_t{2});
        for (const auto &control : controls) {
            QVERIFY(!control.name.isEmpty());
            QVERIFY2(control.canBePressed, qPrintable(control.name));
        }

        QTest::mouseClick(stage.window(), Qt::LeftButton, {},
                          ItemTree::middle(*ItemTree::control(*popover, u"Clean copied links"_s)));
        QVERIFY(!stage.state->autoCleanEnabled());
        QSignalSpy opened(popover, SIGNAL(openHistory()));
        QTest::mouseClick(stage.window(), Qt::LeftButton, {},
                          ItemTree::middle(*ItemTree::control(*popover, u"Verlauf"_s)));
        QCOMPARE(opened.size(), 1);
    }

    void assistiveToolsCanPressBoth()
    {
        Stage stage({});
        QQuickItem *popover = stage.showPopover();
        stage.pass(1s);
        QSignalSpy opened(popover, SIGNAL(openHistory()));

        for (const auto &name : {u"Verlauf"_s, u"Clean copied links"_s}) {
            QQuickItem *control = ItemTree::control(*popover, name);
            QAccessible::queryAccessibleInterface(control)->actionInterface()->doAction(
                QAccessibleActionInterface::pressAction());
        }

        QCOMPARE(opened.size(), 1);
        QVERIFY(!stage.state->autoCleanEnabled());
    }

    void theThemeRecoloursAnOpenPopover()
    {
        Stage stage({});
        QQuickItem *popover = stage.showPopover();
        stage.pass(1s);
        const QImage graphite = stage.picture();

        stage.state->setAppTheme(VelmoraTheme::ocean);
        stage.pass(1s);
        const QImage ocean = stage.picture();
        stage.state->setAppTheme(VelmoraTheme::graphite);
        stage.pass(1s);

        QVERIFY(popover != nullptr);
        QVERIFY(ocean.pixelColor(150, 376) != graphite.pixelColor(150, 376));
        QCOMPARE(stage.picture().pixelColor(20, 60).value() < 60, true);
    }

    void whereLessMotionIsWantedNothingTravels()
    {
        StageSetup setup;
        setup.reducedMotion = true;
        Stage stage(setup);
        QQuickItem *popover = stage.showPopover();
        stage.pass(160ms);

        const auto *panel = popover->findChild<QQuickItem *>(u"panel"_s);
        QCOMPARE(panel->property("sideInset").toDouble(), 0.0);
        stage.pass(1s);
        QCOMPARE(panel->property("drift").toDouble(), 0.0);
        QCOMPARE(shown(*popover), u"11111"_s);
    }
};

static const RegisteredGuiTest<PopoverViewTests> registered;
#include "PopoverViewTests.moc"
