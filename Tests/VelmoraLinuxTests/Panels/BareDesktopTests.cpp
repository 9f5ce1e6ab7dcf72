#include "PanelsOnServer.h"

#include <QEvent>
#include <QImage>
#include <QTest>

#include <Runner/RegisteredTest.h>

#include <algorithm>
#include <layer-shell-client-header.h>

using Panel = LayerShellServer::Panel;

class BareDesktopTests : public QObject, PanelsOnServer {
    Q_OBJECT

    QImage picture_;
    int timesTurnedAway_ = 0;
    bool hidesOnTurn_ = true;

    void show(bool takesKeyboard = true)
    {
        surface_ = panels_->makeSurface({.acceptsMouse = takesKeyboard, .takesKeyboard = takesKeyboard},
                                        {.draw = [this](double) -> const QImage & { return picture_; },
                                         .input =
                                             [this](QEvent &event) {
                                                 if (event.type() != QEvent::FocusOut)
                                                     return;
                                                 ++timesTurnedAway_;
                                                 if (hidesOnTurn_)
                                                     surface_->hide();
                                             },
                                         .removed = [] {}});
        surface_->setFrame(QRect(966, 40, 306, 386));
        surface_->show();
        QTRY_VERIFY(!server_->panels().empty() && server_->panels().back().pictures == 1);
    }

    // The surfaces that tell of presses and can be pressed by now.
    [[nodiscard]] int coveredScreens()
    {
        const auto panels = server_->panels();
        return static_cast<int>(std::count_if(panels.begin(), panels.end(), [](const Panel &panel) {
            return panel.layer == ZWLR_LAYER_SHELL_V1_LAYER_BACKGROUND && panel.pictures == 1;
        }));
    }

    void press(int screen)
    {
        server_->movePointerToDesktop(screen);
        server_->pressLeftButton(true);
        server_->pressLeftButton(false);
    }

private Q_SLOTS:

    void init()
    {
        picture_ = QImage(306, 386, QImage::Format_ARGB32_Premultiplied);
        picture_.fill(Qt::red);
        timesTurnedAway_ = 0;
        hidesOnTurn_ = true;
    }

    void cleanup() { end(); }

    void aPressOnEachScreenIsToldToThePanel()
    {
        begin({.scales = {1, 2}});
        for (const int screen : {0, 1}) {
            timesTurnedAway_ = 0;
            show();
            QTRY_COMPARE(coveredScreens(), 2);
            press(screen);
            QTRY_COMPARE(timesTurnedAway_, 1);
            QVERIFY(!surface_->isVisible());
            QTRY_VERIFY(server_->panels().empty()); // Nothing lies on the desktop any longer than needed.
        }
    }

    void nobodySeesWhatListens()
    {
        begin();
        show();
        QTRY_COMPARE(coveredScreens(), 1);
        const Panel ground = server_->panels().front();
        QCOMPARE(ground.centre, 0U);
        QCOMPARE(ground.pixels, QSize(1, 1));
        QCOMPARE(ground.destination, QSize(1280, 800));
        QCOMPARE(ground.zone, -1); // Below the bars, too, and moving none of them.
        QCOMPARE(ground.keyboard, std::uint32_t(ZWLR_LAYER_SURFACE_V1_KEYBOARD_INTERACTIVITY_NONE));
    }

    void theMouseAloneClosesNothing()
    {
        begin();
        hidesOnTurn_ = false;
        show();
        QTRY_COMPARE(coveredScreens(), 1);
        server_->movePointerToDesktop(0);
        server_->turnWheel(1);
        server_->leavePointerFromDesktop(0);
        server_->configure(); // Answered later than what came before.
        QVERIFY(QTest::qWaitFor([this] { return server_->isAcknowledged(); }));
        QCOMPARE(timesTurnedAway_, 0);
        press(0);
        QTRY_COMPARE(timesTurnedAway_, 1);
    }

    void theKeyboardIsGivenBackAndNobodyIsToldTwice()
    {
        begin();
        hidesOnTurn_ = false; // It fades away.
        show();
        server_->giveKeyboard(true);
        server_->showPicture();
        QTRY_COMPARE(coveredScreens(), 1);
        press(0);
        QTRY_COMPARE(server_->panels().back().keyboard,
                     std::uint32_t(ZWLR_LAYER_SURFACE_V1_KEYBOARD_INTERACTIVITY_NONE));
        QCOMPARE(timesTurnedAway_, 1);
        server_->giveKeyboard(false);
        press(0);
        server_->configure(); // Answered later than what came before.
        QVERIFY(QTest::qWaitFor([this] { return server_->isAcknowledged(); }));
        QCOMPARE(timesTurnedAway_, 1);
    }

    void aToastLeavesTheDesktopAlone()
    {
        begin();
        show(false);
        QCOMPARE(server_->panels().size(), std::size_t(1));
    }

    void screensThatComeAndGoAreFollowed()
    {
        begin({.scales = {1, 1}});
        show();
        QTRY_COMPARE(coveredScreens(), 2);
        server_->removeOutput(0);
        QTRY_COMPARE(coveredScreens(), 1);
        server_->addOutput();
        QTRY_COMPARE(coveredScreens(), 2);
        press(2);
        QTRY_COMPARE(timesTurnedAway_, 1);
    }

    void whatTheCompositorClosesStaysClosed()
    {
        begin();
        show();
        QTRY_COMPARE(coveredScreens(), 1);
        server_->closeDesktop(0);
        QTRY_COMPARE(server_->panels().size(), std::size_t(1));
        QVERIFY(surface_->isVisible());
    }

    void withoutViewportsNothingListens()
    {
        begin({.viewports = false, .fractions = false});
        show();
        QCOMPARE(server_->panels().size(), std::size_t(1));
    }

    void thePanelMayBeDestroyedByThePress()
    {
        begin();
        surface_ = panels_->makeSurface({.takesKeyboard = true},
                                        {.draw = [this](double) -> const QImage & { return picture_; },
                                         .input =
                                             [this](QEvent &event) {
                                                 if (event.type() == QEvent::FocusOut)
                                                     surface_.reset();
                                             },
                                         .removed = [] {}});
        surface_->setFrame(QRect(966, 40, 306, 386));
        surface_->show();
        QTRY_COMPARE(coveredScreens(), 1);
        press(0);
        QTRY_VERIFY(!surface_);
        QTRY_VERIFY(server_->panels().empty());
    }

    void aLostCompositorTakesEverythingAlong()
    {
        begin();
        show();
        QTRY_COMPARE(coveredScreens(), 1);
        server_->stop();
        QTRY_VERIFY(!panels_->areOffered());
        server_->start();
        QTRY_VERIFY_WITH_TIMEOUT(panels_->areOffered(), 20000);
        show();
        QTRY_COMPARE(coveredScreens(), 1);
        press(0);
        QTRY_COMPARE(timesTurnedAway_, 1);
    }
};

static const RegisteredTest<BareDesktopTests> registered;
#include "BareDesktopTests.moc"
