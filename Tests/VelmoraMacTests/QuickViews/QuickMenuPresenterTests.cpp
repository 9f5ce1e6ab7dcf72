#include "ViewsOnSurfaces.h"

#include <VelmoraMac/QuickViews/QuickMenuPresenter.h>

#include <QFocusEvent>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QTest>

#include <Runner/RegisteredTest.h>

#include <optional>

using namespace Qt::StringLiterals;

// The menu as a panel of the desktop's shell.
class QuickMenuPresenterTests : public QObject {
    Q_OBJECT

    std::optional<ViewsOnSurfaces> desktop_;
    std::unique_ptr<QuickMenuPresenter> menus_;
    QStringList chosen_;

    void popUp()
    {
        const StatusMenu menu = {
            {u"Pause"_s, StatusMenuEntry::Check::none, [this] { chosen_ << u"Pause"_s; }},
            {},
            {u"Quit"_s, StatusMenuEntry::Check::none, [this] { chosen_ << u"Quit"_s; }},
        };
        menus_->popUp(menu, QRect(1200, 0, 24, 28), 180);
    }

    [[nodiscard]] FakePanelSurfaces::Record &shown() const { return desktop_->shown(); }

    void input(QEvent &&event) const { desktop_->input(std::move(event)); }

    void press(Qt::Key key, const QString &text = {}) const
    {
        input(QKeyEvent(QEvent::KeyPress, key, Qt::NoModifier, text));
    }

private Q_SLOTS:

    void init()
    {
        chosen_.clear();
        desktop_.emplace();
        menus_ = std::make_unique<QuickMenuPresenter>(desktop_->views);
    }

    void cleanup()
    {
        menus_.reset();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        desktop_.reset();
    }

    void itStandsBesideTheIconAndHasTheKeyboard()
    {
        popUp();
        QVERIFY(shown().visible);
        QVERIFY(shown().traits.acceptsMouse && shown().traits.takesKeyboard);
        QCOMPARE(shown().frame.top(), 32);
        QCOMPARE(shown().frame.right(), desktop_->screens.workArea.right());
        QVERIFY(shown().frame.width() >= 180);
        const QImage picture = shown().picture(2);
        QCOMPARE(picture.size(), shown().frame.size() * 2);
        QCOMPARE(picture.pixelColor(picture.width() / 2, 8).alpha(), 255);
    }

    void keysChooseAnEntry()
    {
        popUp();
        press(Qt::Key_End);
        press(Qt::Key_Return);
        QVERIFY(!shown().exists);
        QTRY_COMPARE(chosen_, QStringList({u"Quit"_s}));
    }

    void aClickChoosesAnEntry()
    {
        popUp();
        const QPointF place(60, 5 + 13);
        for (const QEvent::Type type :
             {QEvent::MouseMove, QEvent::MouseButtonPress, QEvent::MouseButtonRelease}) {
            const bool isDown = type == QEvent::MouseButtonPress;
            input(QMouseEvent(type, place, place, type == QEvent::MouseMove ? Qt::NoButton : Qt::LeftButton,
                              isDown ? Qt::LeftButton : Qt::NoButton, Qt::NoModifier));
            if (!shown().exists)
                break;
        }
        QTRY_COMPARE(chosen_, QStringList({u"Pause"_s}));
    }

    void escapeTurningAwayAndItsRemovalCloseIt()
    {
        popUp();
        press(Qt::Key_Escape);
        QVERIFY(!shown().exists);
        popUp();
        input(QFocusEvent(QEvent::FocusOut));
        QVERIFY(!shown().exists);
        popUp();
        shown().handlers.removed();
        QVERIFY(!shown().exists);
        QVERIFY(chosen_.isEmpty());
    }

    void aSecondClickOnTheIconClosesIt()
    {
        popUp();
        popUp();
        QCOMPARE(desktop_->surfaces.records.size(), std::size_t(1));
        QVERIFY(!shown().exists);
        popUp();
        QCOMPARE(desktop_->surfaces.records.size(), std::size_t(2));
        QVERIFY(shown().visible);
    }

    void aPictureIsAskedForWhenAnEntryIsMarked()
    {
        popUp();
        const QImage before = shown().picture();
        press(Qt::Key_Down);
        QTRY_VERIFY(shown().requests > 0);
        QVERIFY(shown().picture() != before);
    }
};

static const RegisteredGuiTest<QuickMenuPresenterTests> registered;
#include "QuickMenuPresenterTests.moc"
