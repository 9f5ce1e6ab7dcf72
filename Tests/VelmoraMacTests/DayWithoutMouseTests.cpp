#include <QQuickWindow>
#include <QSignalSpy>
#include <QTest>

#include <Rehearsal/ItemTree.h>
#include <Rehearsal/Scenes.h>
#include <Runner/RegisteredTest.h>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

QString nameOf(QQuickItem *item)
{
    QAccessibleInterface *node = item != nullptr ? QAccessible::queryAccessibleInterface(item) : nullptr;
    return node != nullptr ? node->text(QAccessible::Name) : QString();
}

// Presses Tab until what is called `name` has the keyboard. Every stop on the way has to be in sight.
bool tabTo(Stage &stage, const QString &name)
{
    for (int stop = 0; stop < 40; ++stop) {
        QQuickItem *focused = stage.window()->activeFocusItem();
        if (nameOf(focused) == name) {
            const QRectF place = focused->mapRectToScene(focused->boundingRect());
            return place.top() >= 0 && place.top() < stage.window()->height();
        }
        QTest::keyClick(stage.window(), Qt::Key_Tab);
        stage.pass(16ms);
    }
    return false;
}

void press(Stage &stage, int key)
{
    QTest::keyClick(stage.window(), static_cast<Qt::Key>(key));
    stage.pass(16ms);
}

QRect sceneRect(const QQuickItem &item)
{
    return item.mapRectToScene(item.boundingRect()).toRect();
}

// Shows the popover as keys open it.
void openByKeys(Stage &stage)
{
    stage.show(
        u"PopoverView"_s,
        {{u"popoverAnimation"_s, QVariant::fromValue(&stage.popoverAnimation)}, {u"takesKeyboard"_s, true}},
        {306, 386});
    stage.window()->requestActivate();
    QVERIFY(QTest::qWaitForWindowActive(stage.window()));
}

} // namespace

// Each thing that a user can do in the windows, with the keys that do it.
class DayWithoutMouseTests : public QObject {
    Q_OBJECT

private Q_SLOTS:

    void initTestCase()
    {
        prepareFont(u"Inter"_s);
        QAccessible::setActive(true);
    }

    void everySettingCanBeChanged()
    {
        Stage stage({});
        stage.showSettings(AppTab::general);
        stage.window()->requestActivate();
        QVERIFY(QTest::qWaitForWindowActive(stage.window()));

        QVERIFY(tabTo(stage, u"Auto-clean copied links"_s));
        press(stage, Qt::Key_Space);
        QVERIFY(!stage.state->autoCleanEnabled());
        QVERIFY(tabTo(stage, u"Ask before cleaning"_s));
        press(stage, Qt::Key_Space);
        QVERIFY(stage.state->askBeforeCleaningEnabled());
        QVERIFY(tabTo(stage, u"App language"_s));
        press(stage, Qt::Key_Right);
        QCOMPARE(stage.state->language(), AppLanguage::german);
        press(stage, Qt::Key_Left);
        QCOMPARE(stage.state->language(), AppLanguage::english);
        QVERIFY(tabTo(stage, u"Theme"_s));
        const VelmoraTheme theme = stage.state->appTheme();
        press(stage, Qt::Key_Left);
        QVERIFY(stage.state->appTheme() != theme);
        QVERIFY(tabTo(stage, u"Share anonymous usage data"_s));
        const bool shares = stage.state->telemetryEnabled();
        press(stage, Qt::Key_Space);
        QVERIFY(stage.state->telemetryEnabled() != shares);
    }

    void thePopoverTakesKeysFromItsFirstMoment()
    {
        for (const auto opened : {0ms, 96ms, 160ms, 224ms, 288ms, 400ms}) {
            Stage stage({});
            openByKeys(stage);
            QVERIFY(stage.window()->isActive());
            stage.pass(opened);

            press(stage, Qt::Key_Tab);
            QCOMPARE(nameOf(stage.window()->activeFocusItem()), u"Verlauf"_s);
            stage.pass(100ms);
            QTest::keyClick(stage.window(), Qt::Key_Backtab, Qt::ShiftModifier);
            QCOMPARE(nameOf(stage.window()->activeFocusItem()), u"Clean copied links"_s);
            press(stage, Qt::Key_Space);
            QVERIFY(!stage.state->autoCleanEnabled());
        }
    }

    void aClosingPopoverTakesNoKeys()
    {
        Stage stage({});
        openByKeys(stage);
        QVERIFY(stage.window()->isActive());
        stage.pass(1s);
        stage.popoverAnimation.requestClose();

        press(stage, Qt::Key_Space);

        QVERIFY(stage.state->autoCleanEnabled());
    }

    void buttonsAnswerToReturnAndSpace()
    {
        Stage stage({});
        int asked = 0;
        QObject::connect(&stage.notifications, &NotificationCenter::posted, &stage.notifications,
                         [&] { ++asked; });
        stage.showSettings(AppTab::general);
        stage.window()->requestActivate();
        QVERIFY(QTest::qWaitForWindowActive(stage.window()));
        QVERIFY(tabTo(stage, u"Show Menu Bar Icon"_s));
        press(stage, Qt::Key_Return);
        press(stage, Qt::Key_Space);
        QCOMPARE(asked, 2);
    }

    void tabsAreTurnedAndFormsScroll()
    {
        Stage stage({});
        fillHistory(stage, 12);
        QQuickItem *settings = stage.showSettings(AppTab::general);
        stage.window()->requestActivate();
        QVERIFY(QTest::qWaitForWindowActive(stage.window()));
        QVERIFY(tabTo(stage, u"Settings"_s));
        press(stage, Qt::Key_Right);
        QCOMPARE(stage.state->activeAppTab(), AppTab::cleaning);
        press(stage, Qt::Key_Right);
        QCOMPARE(stage.state->activeAppTab(), AppTab::history);

        auto *list = settings->findChild<QQuickItem *>(u"historyList"_s);
        QVERIFY(list != nullptr);
        const double start = list->property("contentY").toDouble();
        press(stage, Qt::Key_PageDown);
        const double page = list->property("contentY").toDouble();
        QVERIFY(page > start + 100);
        press(stage, Qt::Key_End);
        const double end = list->property("contentY").toDouble();
        QVERIFY2(end > page + 100,
                 qPrintable(u"%1 %2 %3"_s.arg(page).arg(end).arg(list->property("count").toInt())));
        press(stage, Qt::Key_Home);
        QVERIFY(list->property("atYBeginning").toBool());
        press(stage, Qt::Key_Down);
        QVERIFY(list->property("contentY").toDouble() > start);
    }

    void tabLeavesTheDomainEditorInBothDirections()
    {
        Stage stage({});
        fillHistory(stage, 1); // Else there is no domain to add, and its button is off.
        stage.showSettings(AppTab::cleaning);
        stage.window()->requestActivate();
        QVERIFY(QTest::qWaitForWindowActive(stage.window()));
        const QStringList round{u"Settings"_s, u"Ignored Domains"_s, u"Ignore last domain"_s};
        QVERIFY(tabTo(stage, round.front()));
        for (const QString &name : {round[1], round[2], round[0]}) {
            press(stage, Qt::Key_Tab);
            QCOMPARE(nameOf(stage.window()->activeFocusItem()), name);
        }
        for (const QString &name : {round[2], round[1], round[0]}) {
            press(stage, Qt::Key_Backtab);
            QCOMPARE(nameOf(stage.window()->activeFocusItem()), name);
        }
    }

    void escapeAndControlWCloseTheSettings()
    {
        for (const bool isEscape : {true, false}) {
            Stage stage({});
            stage.showSettings(AppTab::general);
            stage.window()->requestActivate();
            QVERIFY(QTest::qWaitForWindowActive(stage.window()));
            if (isEscape)
                QTest::keyClick(stage.window(), Qt::Key_Escape);
            else
                QTest::keyClick(stage.window(), Qt::Key_W, Qt::ControlModifier);
            QVERIFY(!stage.window()->isVisible());
        }
    }

    void focusIsSeenOnEveryStop()
    {
        Stage stage({});
        stage.showSettings(AppTab::general);
        stage.window()->requestActivate();
        QVERIFY(QTest::qWaitForWindowActive(stage.window()));
        QStringList stops;
        const QQuickItem *earlier = nullptr;
        QRect earlierPlace;
        QImage earlierPicture;
        int compared = 0;
        for (int stop = 0; stop < 12; ++stop) {
            press(stage, Qt::Key_Tab);
            const QQuickItem *focused = stage.window()->activeFocusItem();
            stops.append(nameOf(stage.window()->activeFocusItem()));
            const QRect place = sceneRect(*focused);
            QVERIFY2(QRect(0, 0, 660, 640).contains(place), qPrintable(stops.last()));
            const QImage picture = stage.picture();
            // What has lost the keyboard looks different, unless it was scrolled.
            if (earlier != nullptr && sceneRect(*earlier) == earlierPlace) {
                const QRect around = earlierPlace.adjusted(-4, -4, 4, 4);
                QVERIFY2(picture.copy(around) != earlierPicture.copy(around),
                         qPrintable(stops[stops.size() - 2]));
                ++compared;
            }
            earlier = focused;
            earlierPlace = place;
            earlierPicture = picture;
        }
        QVERIFY2(compared > 6, qPrintable(QString::number(compared)));
        QVERIFY2(!stops.contains(QString()), qPrintable(stops.join(u", "_s)));
    }

    void whatIsOffCannotBePressedByAssistiveToolsEither()
    {
        for (const int cleanings : {0, 1}) {
            Stage stage({});
            fillHistory(stage, cleanings);
            QQuickItem *button =
                ItemTree::control(*stage.showSettings(AppTab::cleaning), u"Ignore last domain"_s);
            QCOMPARE(button->isEnabled(), cleanings > 0);
            const QSignalSpy pressed(button, SIGNAL(clicked()));
            QAccessible::queryAccessibleInterface(button)->actionInterface()->doAction(
                QAccessibleActionInterface::pressAction());
            QCOMPARE(pressed.count(), cleanings);
        }
    }

    void tabsAreSelectedAndChoicesChecked()
    {
        Stage stage({});
        QQuickItem *settings = stage.showSettings(AppTab::general);
        const auto stateOf = [settings](const QString &name) {
            return QAccessible::queryAccessibleInterface(ItemTree::control(*settings, name))->state();
        };
        QVERIFY(stateOf(u"General"_s).selected);
        QVERIFY(!stateOf(u"General"_s).checkable);
        QVERIFY(!stateOf(u"History"_s).selected);
        QVERIFY(stateOf(u"Graphite"_s).checked);
    }
};

static const RegisteredGuiTest<DayWithoutMouseTests> registered;
#include "DayWithoutMouseTests.moc"
