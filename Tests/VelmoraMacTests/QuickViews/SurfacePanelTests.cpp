#include "ViewsOnSurfaces.h"

#include <QFile>
#include <QKeyEvent>
#include <QTemporaryDir>
#include <QTest>

#include <Runner/RegisteredTest.h>

#include <optional>

using namespace Qt::StringLiterals;

namespace {

constexpr QRect frame(100, 40, 300, 200);

} // namespace

// A panel of the desktop's shell, as the views see it.
class SurfacePanelTests : public QObject {
    Q_OBJECT

    QTemporaryDir folder_;
    std::optional<ViewsOnSurfaces> desktop_;
    int cancellations_ = 0;
    int requests_ = 0;

    [[nodiscard]] std::unique_ptr<Panel> panel(bool acceptsMouse = false)
    {
        const View view{QUrl::fromLocalFile(folder_.filePath(u"View.qml"_s)),
                        {{u"ground"_s, QColor(Qt::green)}},
                        {{"pressed", [this] { ++requests_; }}}};
        auto made = desktop_->views.makePanel(view, {.size = frame.size(),
                                                     .acceptsMouse = acceptsMouse,
                                                     .cancelled = [this] { ++cancellations_; },
                                                     .followsUser = true});
        made->setFrame(frame, FrameChange::atOnce);
        return made;
    }

    [[nodiscard]] FakePanelSurfaces::Record &shown() const { return desktop_->shown(); }

    void input(QEvent &&event) const { desktop_->input(std::move(event)); }

private Q_SLOTS:

    void initTestCase()
    {
        QFile file(folder_.filePath(u"View.qml"_s));
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write("import QtQuick\n"
                   "Rectangle {\n"
                   "    property color ground\n"
                   "    signal pressed\n"
                   "    color: ground; radius: 40; focus: true\n"
                   "    Keys.onSpacePressed: pressed()\n"
                   "    Keys.onPressed: event => { if (event.key === Qt.Key_B) color = 'blue' }\n"
                   "    Rectangle { anchors { right: parent.right; bottom: parent.bottom }\n"
                   "                width: 100; height: 100; color: 'black' }\n"
                   "}\n");
    }

    void init()
    {
        cancellations_ = 0;
        requests_ = 0;
        desktop_.emplace();
    }

    void aPanelIsAWindowWhileTheShellOffersNothing()
    {
        desktop_->surfaces.offered = false;
        const auto made = panel();
        QCOMPARE(desktop_->windows.panels, 1);
        QVERIFY(desktop_->surfaces.records.empty());
    }

    void itsTraitsAreThoseOfThePanel()
    {
        const auto made = panel();
        QCOMPARE(desktop_->windows.panels, 0);
        QVERIFY(!shown().traits.acceptsMouse);
        QVERIFY(shown().traits.takesKeyboard);
        QVERIFY(shown().traits.followsUser);
        QCOMPARE(shown().frame, frame);
        QVERIFY(!made->isVisible());
        made->orderFront();
        QVERIFY(made->isVisible() && shown().visible);
        made->orderOut();
        QVERIFY(!shown().visible);
    }

    void itsPictureIsTheViewAtAnyScale_data()
    {
        QTest::addColumn<double>("scale");
        for (const double scale : {1.0, 1.25, 1.5, 2.0, 3.0})
            QTest::addRow("%g", scale) << scale;
    }

    void itsPictureIsTheViewAtAnyScale()
    {
        QFETCH(double, scale);
        const auto made = panel();
        const QImage picture = shown().picture(scale);
        QCOMPARE(picture.size(), (QSizeF(frame.size()) * scale).toSize());
        QCOMPARE(picture.pixelColor(0, 0).alpha(), 0);
        QCOMPARE(picture.pixelColor(qRound(150 * scale), qRound(50 * scale)), QColor(Qt::green));
        QCOMPARE(picture.pixelColor(picture.width() - 1, picture.height() - 1), QColor(Qt::black));
        // The black square begins at a point that is a whole pixel at every scale above.
        const int edge = qRound(100 * scale);
        QCOMPARE(picture.pixelColor(picture.width() / 3 * 2 + 2, edge + 2), QColor(Qt::black));
        QCOMPARE(picture.pixelColor(picture.width() / 3 * 2 + 2, edge - 2), QColor(Qt::green));
    }

    void aChangeOfTheViewAsksForAPicture()
    {
        const auto made = panel();
        made->orderFront();
        input(QFocusEvent(QEvent::FocusIn));
        QCOMPARE(shown().picture().pixelColor(20, 100), QColor(Qt::green));
        QCOMPARE(shown().requests, 0);
        input(QKeyEvent(QEvent::KeyPress, Qt::Key_B, Qt::NoModifier, u"b"_s));
        QTRY_VERIFY(shown().requests > 0);
        QCOMPARE(shown().picture().pixelColor(20, 100), QColor(Qt::blue));
    }

    void itGrowsInStepsThatKeepItsFrameAndSizeTogether()
    {
        const auto made = panel();
        made->orderFront();
        const QRect grown = frame.adjusted(0, 0, 0, 150);
        made->setFrame(grown, FrameChange::animated);
        QCOMPARE(made->frame(), grown);
        QTRY_COMPARE(shown().frame, grown);
        QVERIFY(shown().frames.size() > 2);
        for (const QRect &step : shown().frames)
            QCOMPARE(step.topLeft(), frame.topLeft());
        QCOMPARE(shown().picture().size(), grown.size());
    }

    void withReducedMotionItGrowsAtOnce()
    {
        desktop_->appearance.reduced = true;
        const auto made = panel();
        made->setFrame(frame.adjusted(0, 0, 0, 150), FrameChange::animated);
        QCOMPARE(shown().frames.size(), std::size_t(2));
    }

    void keysReachTheView()
    {
        const auto made = panel();
        made->orderFront();
        input(QFocusEvent(QEvent::FocusIn));
        input(QKeyEvent(QEvent::KeyPress, Qt::Key_Space, Qt::NoModifier, u" "_s));
        QCOMPARE(requests_, 1);
        QCOMPARE(cancellations_, 0);
    }

    void escapeAndTurningAwayCancelIt()
    {
        const auto made = panel();
        made->orderFront();
        input(QKeyEvent(QEvent::KeyPress, Qt::Key_Escape, Qt::NoModifier));
        QCOMPARE(cancellations_, 1);
        input(QFocusEvent(QEvent::FocusOut));
        QCOMPARE(cancellations_, 2);
        shown().handlers.removed();
        QCOMPARE(cancellations_, 3);
    }

    void aViewsRequestMayDestroyThePanel()
    {
        std::unique_ptr<Panel> made;
        const View view{QUrl::fromLocalFile(folder_.filePath(u"View.qml"_s)),
                        {},
                        {{"pressed", [&made] { made.reset(); }}}};
        made = desktop_->views.makePanel(view, {.size = frame.size(), .acceptsMouse = false});
        made->orderFront();
        const auto record = desktop_->surfaces.records.back();
        input(QFocusEvent(QEvent::FocusIn));
        input(QKeyEvent(QEvent::KeyPress, Qt::Key_Space, Qt::NoModifier, u" "_s));
        QVERIFY(!record->exists);
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }

    void closingAllViewsLeavesAnEmptyPanel()
    {
        const auto made = panel();
        made->orderFront();
        desktop_->views.closeAll();
        QCOMPARE(shown().picture().pixelColor(150, 50).alpha(), 0);
    }
};

static const RegisteredGuiTest<SurfacePanelTests> registered;
#include "SurfacePanelTests.moc"
