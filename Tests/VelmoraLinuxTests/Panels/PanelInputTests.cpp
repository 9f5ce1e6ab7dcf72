#include "PanelsOnServer.h"

#include <QImage>
#include <QKeyEvent>
#include <QKeySequence>
#include <QMouseEvent>
#include <QTest>
#include <QWheelEvent>

#include <Runner/RegisteredTest.h>

#include <layer-shell-client-header.h>
#include <linux/input-event-codes.h>
#include <optional>

using namespace Qt::StringLiterals;

namespace {

constexpr QRect frame(966, 40, 306, 386);
constexpr std::uint32_t none = ZWLR_LAYER_SURFACE_V1_KEYBOARD_INTERACTIVITY_NONE;
constexpr std::uint32_t exclusive = ZWLR_LAYER_SURFACE_V1_KEYBOARD_INTERACTIVITY_EXCLUSIVE;
constexpr std::uint32_t onDemand = ZWLR_LAYER_SURFACE_V1_KEYBOARD_INTERACTIVITY_ON_DEMAND;

// An event in words, so that a failure tells what came.
QString describe(const QEvent &event)
{
    switch (event.type()) {
    case QEvent::MouseMove:
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonRelease: {
        const auto &mouse = static_cast<const QMouseEvent &>(event);
        const QString what = mouse.type() == QEvent::MouseMove          ? u"move"_s
                             : mouse.type() == QEvent::MouseButtonPress ? u"press"_s
                                                                        : u"release"_s;
        return u"%1 %2 %3 %4"_s.arg(what)
            .arg(mouse.position().x())
            .arg(mouse.position().y())
            .arg(mouse.buttons().toInt());
    }
    case QEvent::Leave:
        return u"leave"_s;
    case QEvent::Wheel: {
        const auto &wheel = static_cast<const QWheelEvent &>(event);
        return u"wheel %1 %2"_s.arg(wheel.angleDelta().y()).arg(wheel.pixelDelta().y());
    }
    case QEvent::KeyPress:
    case QEvent::KeyRelease: {
        const auto &key = static_cast<const QKeyEvent &>(event);
        const QString name = QKeySequence(key.key()).toString();
        const QString what = key.isAutoRepeat()               ? u"again"_s
                             : key.type() == QEvent::KeyPress ? u"key"_s
                                                              : u"key up"_s;
        return u"%1 %2 '%3'"_s.arg(what, name, key.text());
    }
    case QEvent::FocusIn:
        return u"focus"_s;
    case QEvent::FocusOut:
        return u"no focus"_s;
    default:
        return QString::number(event.type());
    }
}

} // namespace

class PanelInputTests : public QObject, PanelsOnServer {
    Q_OBJECT

    QImage picture_;
    QStringList events_;
    std::function<void()> onEvent_;

    void show()
    {
        surface_ = panels_->makeSurface({.acceptsMouse = true, .takesKeyboard = true},
                                        {.draw = [this](double) -> const QImage & { return picture_; },
                                         .input =
                                             [this](QEvent &event) {
                                                 events_ << describe(event);
                                                 if (onEvent_)
                                                     onEvent_();
                                             },
                                         .removed = [] {}});
        surface_->setFrame(frame);
        surface_->show();
        QTRY_VERIFY(!server_->panels().empty() && server_->panels().back().pictures == 1);
    }

    [[nodiscard]] std::uint32_t keyboard() { return server_->panels().back().keyboard; }

    // The icon that a click with this hint is found at.
    [[nodiscard]] std::optional<QRect> icon(QPoint hint)
    {
        std::optional<QRect> found;
        panels_->locateIcon(hint, [&found](const QRect &icon) { found = icon; });
        const bool isFound = QTest::qWaitFor([&found] { return found.has_value(); }, 20000);
        return isFound ? found : std::nullopt;
    }

private Q_SLOTS:

    void init()
    {
        picture_ = QImage(frame.size(), QImage::Format_ARGB32_Premultiplied);
        picture_.fill(Qt::red);
        events_.clear();
        onEvent_ = nullptr;
    }

    void cleanup() { end(); }

    void theMouseIsHeard()
    {
        begin();
        show();
        server_->movePointer({10.5, 20});
        server_->pressLeftButton(true);
        server_->pressLeftButton(false);
        server_->turnWheel(2);
        server_->leavePointer();
        QTRY_COMPARE(events_, QStringList({u"move 10.5 20 0"_s, u"press 10.5 20 1"_s, u"release 10.5 20 0"_s,
                                           u"wheel -240 0"_s, u"leave"_s}));
    }

    void theFirstFingerIsAMouse()
    {
        begin();
        show();
        server_->touch({{30, 40}, {35, 40}});
        QTRY_COMPARE(events_, QStringList({u"move 30 40 0"_s, u"press 30 40 1"_s, u"move 30 40 1"_s,
                                           u"move 35 40 1"_s, u"release 35 40 0"_s, u"leave"_s}));
    }

    void theKeyboardIsHeardByTheUsersLayout()
    {
        begin();
        show();
        server_->giveKeyboard(true);
        server_->showPicture();
        for (const int code : {KEY_TAB, KEY_SPACE, KEY_DOWN, KEY_S, KEY_ENTER, KEY_ESC})
            server_->pressKey(static_cast<std::uint32_t>(code), true);
        server_->pressKey(KEY_ESC, false);
        server_->giveKeyboard(false);
        QTRY_COMPARE(events_, QStringList({u"focus"_s, u"key Tab '\t'"_s, u"key Space ' '"_s,
                                           u"key Down ''"_s, u"key S 's'"_s, u"key Return '\r'"_s,
                                           u"key Esc '\x1b'"_s, u"key up Esc '\x1b'"_s, u"no focus"_s}));
    }

    void aKeyThatIsHeldRepeatsUntilItOrTheKeyboardGoes()
    {
        begin();
        show();
        server_->giveKeyboard(true);
        server_->setKeyRepeat(100, 20);
        server_->pressKey(KEY_LEFTSHIFT, true);
        server_->pressKey(KEY_DOWN, true);
        QTRY_COMPARE(events_.mid(2, 3),
                     QStringList({u"key Down ''"_s, u"again Down ''"_s, u"again Down ''"_s}));
        QVERIFY(events_.filter(u"again"_s).filter(u"Shift"_s).isEmpty());

        // The key pressed last repeats instead, and one that has gone up does not go on.
        server_->pressKey(KEY_UP, true);
        QTRY_COMPARE(events_.last(3), QStringList(3, u"again Up ''"_s));
        server_->pressKey(KEY_UP, false);
        server_->pressKey(KEY_DOWN, false);
        server_->pressKey(KEY_A, true);
        QTRY_COMPARE(events_.last(3), QStringList(3, u"again A 'a'"_s));
        QVERIFY(events_.mid(events_.indexOf(u"key up Up ''"_s)).filter(u"again Up"_s).isEmpty());
        QVERIFY(events_.mid(events_.indexOf(u"key Up ''"_s)).filter(u"again Down"_s).isEmpty());

        server_->interruptKeyboard();
        server_->pressKey(KEY_DOWN, true);
        QTRY_COMPARE(events_.last(3), QStringList(3, u"again Down ''"_s));
        QVERIFY(events_.mid(events_.lastIndexOf(u"focus"_s)).filter(u"again A"_s).isEmpty());
    }

    void aKeyDoesNotRepeatWhereTheUserHasThatSwitchedOff()
    {
        begin();
        show();
        server_->giveKeyboard(true);
        server_->setKeyRepeat(100, 1);
        server_->pressKey(KEY_DOWN, true);
        QTRY_VERIFY(events_.contains(u"again Down ''"_s));
        server_->setKeyRepeat(0, 1);
        server_->pressKey(KEY_UP, true);
        server_->pressKey(KEY_UP, false);
        QTRY_COMPARE(events_.last(2), QStringList({u"key Up ''"_s, u"key up Up ''"_s}));
    }

    void theKeyboardIsHadOnDemandWhereItComesByItself()
    {
        begin();
        show();
        server_->giveKeyboard(true);
        server_->showPicture();
        server_->movePointer({1, 2}); // What comes after it proves that the picture was heard of.
        QTRY_COMPARE(events_, QStringList({u"focus"_s, u"move 1 2 0"_s}));
        QCOMPARE(keyboard(), onDemand);
        server_->giveKeyboard(false);
        QTRY_COMPARE(events_.back(), u"no focus"_s);
    }

    void aKeyboardThatIsBackAtOnceIsLostOnlyByAClickElsewhere()
    {
        begin();
        show();
        server_->giveKeyboard(true);
        server_->showPicture();
        server_->movePointer({1, 2});
        server_->interruptKeyboard();
        server_->pressKey(KEY_ESC, true);
        QTRY_COMPARE(events_, QStringList({u"focus"_s, u"move 1 2 0"_s, u"focus"_s, u"key Esc '\x1b'"_s}));
        server_->giveKeyboard(false);
        QTRY_COMPARE(events_.mid(4), QStringList({u"no focus"_s}));
    }

    void whereTheMouseIsElsewhereAnInterruptionIsAClick()
    {
        begin();
        show();
        server_->giveKeyboard(true);
        server_->showPicture();
        server_->interruptKeyboard();
        QTRY_COMPARE(events_, QStringList({u"focus"_s, u"focus"_s, u"no focus"_s}));
    }

    void aKeyboardThatGoesBeforeThePictureComesIsClaimed()
    {
        begin();
        show();
        server_->giveKeyboard(true);
        server_->giveKeyboard(false);
        server_->showPicture();
        QTRY_COMPARE(keyboard(), exclusive);
        server_->giveKeyboard(true);
        QTRY_COMPARE(events_, QStringList({u"focus"_s, u"focus"_s}));
    }

    void whereItDoesNotComeItIsClaimedAndLetGo()
    {
        begin();
        show();
        server_->showPicture();
        QTRY_COMPARE(keyboard(), exclusive);
        server_->giveKeyboard(true);
        QTRY_COMPARE(keyboard(), onDemand);
        QTRY_COMPARE(events_, QStringList({u"focus"_s}));
        server_->movePointer({1, 2});
        QTRY_COMPARE(events_.back(), u"move 1 2 0"_s);
        server_->giveKeyboard(false);
        QTRY_COMPARE(events_.back(), u"no focus"_s);
        QTRY_COMPARE(keyboard(), none); // Not again, while the panel closes.
    }

    void whereLettingGoLosesItTheClaimStays()
    {
        begin();
        show();
        server_->loseKeyboardOnDemand();
        server_->showPicture();
        QTRY_COMPARE(keyboard(), exclusive);
        server_->giveKeyboard(true);
        QTRY_COMPARE(server_->keyboardRequests(),
                     QList<std::uint32_t>({onDemand, exclusive, onDemand, exclusive}));
        server_->giveKeyboard(true);
        server_->movePointer({1, 2});
        QTRY_COMPARE(events_, QStringList({u"focus"_s, u"focus"_s, u"move 1 2 0"_s}));
        QCOMPARE(keyboard(), exclusive);
        server_->giveKeyboard(false);
        QTRY_COMPARE(events_.back(), u"no focus"_s);
    }

    void anOldShellHasTheClaimOnly()
    {
        begin({.shellVersion = 3});
        show();
        QCOMPARE(keyboard(), exclusive);
        server_->giveKeyboard(true);
        server_->showPicture();
        server_->giveKeyboard(false);
        QTRY_COMPARE(events_, QStringList({u"focus"_s, u"no focus"_s}));
        QTRY_COMPARE(keyboard(), none);
    }

    void aPanelMayGoWhileItIsPressed()
    {
        begin();
        show();
        onEvent_ = [this] {
            if (events_.back().startsWith(u"press"))
                surface_.reset();
        };
        server_->movePointer({10, 20});
        server_->pressLeftButton(true);
        QTRY_VERIFY(!surface_);
        QTRY_VERIFY(server_->panels().empty());
        show();
        server_->movePointer({1, 2});
        QTRY_COMPARE(events_.back(), u"move 1 2 0"_s);
    }

    void aClickWhosePlaceIsToldNeedsNoSearch()
    {
        begin({.bar = 32});
        QCOMPARE(icon({1200, 20}), QRect(1200, 0, 1, 32));
        QCOMPARE(icon({1200, 790}), QRect(1200, 768, 1, 32));
        QVERIFY(server_->panels().empty());
        QCOMPARE(panels_->screens().workAreaAt(QPoint(100, 100)), QRect(0, 0, 1280, 768));
    }

    void aClickInsideTheIconIsSearchedWithThePointer()
    {
        begin({.bar = 32, .scales = {1, 1}});
        server_->putPointer({2500, 790});
        QCOMPARE(icon({9, 16}), QRect(2500, 768, 1, 32));
        QCOMPARE(panels_->screens().workAreaAt(QPoint(2000, 100)), QRect(1280, 0, 1280, 768));
        QVERIFY(server_->panels().empty());
        server_->putPointer({1000, 5});
        QCOMPARE(icon({9, 16}), QRect(1000, 0, 1, 32));
    }

    void withoutAPointerTheIconIsAtTheEndOfTheBar()
    {
        begin({.bar = 32});
        QCOMPARE(icon({9, 16}), QRect(1279, 0, 1, 32));
    }

    void withoutViewportsThereIsNoSearchForThePointer()
    {
        begin({.viewports = false, .fractions = false, .bar = 32});
        server_->putPointer({200, 5});
        QCOMPARE(icon({9, 16}), QRect(1279, 0, 1, 32));
    }

    void aCompositorThatIsGoneKeepsNobodyWaiting()
    {
        begin({.bar = 32});
        QVERIFY(icon({9, 16}));
        server_->stop();
        QTRY_VERIFY(!panels_->areOffered());
        QVERIFY(icon({9, 16}));
    }

    void ofTwoClicksTheSecondIsAnswered()
    {
        begin({.bar = 32});
        QStringList answers;
        panels_->locateIcon({900, 10}, [&answers](const QRect &) { answers << u"first"_s; });
        panels_->locateIcon({1000, 10}, [&answers](const QRect &) { answers << u"second"_s; });
        QTRY_COMPARE(answers, QStringList({u"second"_s}));
    }
};

static const RegisteredTest<PanelInputTests> registered;
#include "PanelInputTests.moc"
