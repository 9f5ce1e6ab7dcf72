#include "PanelsOnServer.h"

#include <QEvent>
#include <QImage>
#include <QTest>

#include <Runner/RegisteredTest.h>

#include <layer-shell-client-header.h>
#include <optional>

using namespace std::chrono_literals;
using Panel = LayerShellServer::Panel;

namespace {
constexpr QRect toastFrame(920, 10, 342, 86);
constexpr PanelSurfaceTraits toastTraits = {
    .acceptsMouse = false, .takesKeyboard = false, .followsUser = true};
constexpr PanelSurfaceTraits popoverTraits = {.acceptsMouse = true, .takesKeyboard = true};
} // namespace

class LayerPanelsTests : public QObject, PanelsOnServer {
    Q_OBJECT

    QSize size_ = toastFrame.size();
    QRgb color_ = 0;
    QImage picture_;
    QList<double> drawn_; // The scales of all pictures so far.
    int removals_ = 0;

    void make(const PanelSurfaceTraits &traits, const QRect &frame)
    {
        size_ = frame.size();
        surface_ = panels_->makeSurface(traits, {.draw = [this](double scale) -> const QImage & {
                                                     drawn_ << scale;
                                                     picture_ = QImage((QSizeF(size_) * scale).toSize(),
                                                                       QImage::Format_ARGB32_Premultiplied);
                                                     picture_.fill(color_);
                                                     return picture_;
                                                 },
                                                 .input = [](QEvent &) {},
                                                 .removed = [this] { ++removals_; }});
        surface_->setFrame(frame);
    }

    // Shows a panel and waits for its first picture.
    void show(const PanelSurfaceTraits &traits = toastTraits, const QRect &frame = toastFrame)
    {
        make(traits, frame);
        surface_->show();
        QTRY_COMPARE(pictures(), 1);
    }

    [[nodiscard]] Panel panel()
    {
        const auto panels = server_->panels();
        return panels.empty() ? Panel() : panels.back();
    }

    [[nodiscard]] int pictures() { return panel().pictures; }

    // What the client was told has been dealt with, however little that is.
    void catchUp()
    {
        QVERIFY(QTest::qWaitFor([this] { return server_->isAcknowledged(); }));
    }

private Q_SLOTS:

    void init()
    {
        color_ = qRgba(10, 20, 30, 255);
        drawn_.clear();
        removals_ = 0;
    }

    void cleanup() { end(); }

    void withoutTheProtocolThereAreNoPanels()
    {
        QVERIFY(!LayerPanels::create(scheduler_, "/nowhere/at-all"));
        server_.emplace(LayerShellServer::Offer{.shell = false});
        QVERIFY(!LayerPanels::create(scheduler_, server_->display()));
    }

    void aToastIsAboveAllWithoutKeyboardAndMouseWhereTheUserIs()
    {
        begin();
        show();
        const Panel toast = panel();
        QCOMPARE(toast.size, toastFrame.size());
        QCOMPARE(toast.anchors,
                 std::uint32_t(ZWLR_LAYER_SURFACE_V1_ANCHOR_TOP | ZWLR_LAYER_SURFACE_V1_ANCHOR_RIGHT));
        QCOMPARE(toast.margins, QMargins(0, 10, 18, 0));
        QCOMPARE(toast.keyboard, std::uint32_t(ZWLR_LAYER_SURFACE_V1_KEYBOARD_INTERACTIVITY_NONE));
        QCOMPARE(toast.layer, std::uint32_t(ZWLR_LAYER_SHELL_V1_LAYER_OVERLAY));
        QCOMPARE(toast.zone, 0); // Beside bars, and none of its own.
        QCOMPARE(toast.output, -1);
        QVERIFY(!toast.acceptsInput);
        QCOMPARE(toast.pixels, toastFrame.size());
        QCOMPARE(toast.centre, color_);
    }

    void aPopoverHasTheKeyboardAndIsOnTheScreenOfItsFrame()
    {
        begin({.scales = {1, 1}});
        show(popoverTraits, QRect(2254, 8, 306, 386));
        QCOMPARE(panel().keyboard, std::uint32_t(ZWLR_LAYER_SURFACE_V1_KEYBOARD_INTERACTIVITY_ON_DEMAND));
        QCOMPARE(panel().output, 1);
        QCOMPARE(panel().margins, QMargins(0, 8, 0, 0));
        QVERIFY(panel().acceptsInput);
    }

    void noPictureComesBeforeTheCompositorHasConfigured()
    {
        begin();
        server_->holdConfigurations();
        make(toastTraits, toastFrame);
        surface_->show();
        surface_->requestPicture();
        QTRY_COMPARE(server_->panels().size(), std::size_t(1));
        QTest::qWait(0);
        QVERIFY(drawn_.isEmpty());
        server_->configure();
        QTRY_COMPARE(pictures(), 1);
    }

    void nothingIsDrawnBeforeTheLastPictureIsSeen()
    {
        begin();
        show();
        color_ = qRgba(1, 2, 3, 255);
        for (int i = 0; i < 3; ++i)
            surface_->requestPicture();
        server_->configure(); // Answered at once; what follows comes later than it.
        catchUp();
        QCOMPARE(drawn_.size(), 1);
        server_->showPicture();
        QTRY_COMPARE(pictures(), 2);
        QCOMPARE(panel().centre, color_);
        QCOMPARE(drawn_.size(), 2);
    }

    void frameAndPictureChangeTogether()
    {
        begin();
        show(popoverTraits, QRect(966, 8, 306, 386));
        const QRect grown(966, 8, 306, 536);
        size_ = grown.size();
        surface_->setFrame(grown);
        surface_->requestPicture();
        server_->showPicture();
        QTRY_COMPARE(pictures(), 2);
        QCOMPARE(panel().size, grown.size());
        QCOMPARE(panel().pixels, grown.size());
        QTRY_VERIFY(server_->isAcknowledged());
    }

    void picturesHaveThePixelsOfTheScreen_data()
    {
        QTest::addColumn<double>("scale");
        QTest::addColumn<bool>("viewports");
        QTest::addColumn<bool>("fractions");
        QTest::addColumn<QSize>("pixels");
        QTest::addColumn<int>("bufferScale");
        for (const bool fractions : {true, false}) {
            const char *how = fractions ? "told" : "found out";
            QTest::addRow("1, %s", how) << 1.0 << true << fractions << QSize(342, 86) << 1;
            QTest::addRow("1.5, %s", how) << 1.5 << true << fractions << QSize(513, 129) << 1;
            QTest::addRow("2, %s", how) << 2.0 << true << fractions << QSize(684, 172) << 1;
        }
        QTest::newRow("2, whole numbers only") << 2.0 << false << false << QSize(684, 172) << 2;
        QTest::newRow("1.5, whole numbers only") << 1.5 << false << false << QSize(684, 172) << 2;
    }

    void picturesHaveThePixelsOfTheScreen()
    {
        QFETCH(double, scale);
        QFETCH(bool, viewports);
        QFETCH(bool, fractions);
        begin({.viewports = viewports, .fractions = fractions, .scales = {scale}});
        show();
        if (fractions)
            server_->preferScale(scale);
        server_->showPicture();
        QFETCH(QSize, pixels);
        QTRY_COMPARE(panel().pixels, pixels);
        QTEST(panel().bufferScale, "bufferScale");
        QCOMPARE(panel().destination, viewports ? toastFrame.size() : QSize());
    }

    void anotherScaleIsFollowed()
    {
        begin({.scales = {1, 2}});
        show();
        QCOMPARE(drawn_, QList<double>({2})); // Which screen it will be is not known yet: the finest one.
        server_->enterOutput(0);
        server_->showPicture();
        QTRY_COMPARE(panel().pixels, toastFrame.size());
        server_->leaveOutput(0);
        server_->enterOutput(1);
        server_->showPicture();
        QTRY_COMPARE(panel().pixels, toastFrame.size() * 2);
        server_->preferScale(1.25);
        server_->showPicture();
        QTRY_COMPARE(panel().pixels, (QSizeF(toastFrame.size()) * 1.25).toSize());
        QCOMPARE(panel().destination, toastFrame.size());
    }

    void aPanelThatTheCompositorClosesIsGone()
    {
        begin();
        show();
        server_->close();
        QTRY_COMPARE(removals_, 1);
        QVERIFY(!surface_->isVisible());
        QTRY_VERIFY(server_->panels().empty());
        surface_->show();
        QTRY_COMPARE(pictures(), 1);
    }

    void aScreenThatIsUnpluggedLeavesTheOthers()
    {
        begin({.scales = {1, 1}});
        QCOMPARE(panels_->screens().workAreaAt(QPoint(1300, 10)), QRect(1280, 0, 1280, 800));
        server_->removeOutput(0);
        QTRY_COMPARE(panels_->screens().mainWorkArea(), QRect(1280, 0, 1280, 800));
        show(popoverTraits, QRect(1300, 8, 306, 386));
        QCOMPARE(panel().output, 1);
    }

    void barsThatAreNoLayerSurfacesAreKeptFree()
    {
        begin({.scales = {1, 1}});
        panels_->setFreePart([] { return QRectF(0, 0, 1, 756.0 / 800); });
        QCOMPARE(panels_->screens().mainWorkArea(), QRect(0, 0, 1280, 756));
        QCOMPARE(panels_->screens().workAreaAt(QPoint(1300, 10)), QRect(1280, 0, 1280, 756));
        std::optional<QRect> icon;
        panels_->locateIcon({1030, 785}, [&icon](const QRect &found) { icon = found; });
        QTRY_COMPARE(icon, QRect(1030, 756, 1, 44)); // The whole thickness of the bar.

        // Of that bar the compositor knows nothing: it counts from the edge of the screen.
        show(popoverTraits, QRect(900, 362, 306, 386));
        QCOMPARE(panel().margins, QMargins(0, 0, 74, 52));
    }

    void oneBarThatBothTellOfCountsOnce()
    {
        begin({.bar = 44});
        panels_->setFreePart([] { return QRectF(0, 0, 1, 756.0 / 800); });
        std::optional<QRect> icon;
        panels_->locateIcon({1030, 785}, [&icon](const QRect &found) { icon = found; });
        QTRY_COMPARE(icon, QRect(1030, 756, 1, 44));
        show(popoverTraits, QRect(900, 362, 306, 386));
        QCOMPARE(panel().margins, QMargins(0, 0, 74, 8));
    }

    void screensAreKnownWithoutAProtocolForTheirFrames()
    {
        begin({.outputFrames = false, .scales = {2, 1}});
        QCOMPARE(panels_->screens().mainWorkArea(), QRect(0, 0, 1280, 800));
        QCOMPARE(panels_->screens().workAreaAt(QPoint(2000, 700)), QRect(1280, 0, 1280, 800));
    }

    void aHiddenPanelCanBeShownAgain()
    {
        begin();
        show();
        surface_->hide();
        QTRY_VERIFY(server_->panels().empty());
        surface_->requestPicture();
        surface_->show();
        QTRY_COMPARE(pictures(), 1);
        QCOMPARE(removals_, 0);
    }

    void aLostCompositorTakesThePanelsAlongAndIsFoundAgain()
    {
        begin();
        show();
        server_->stop();
        QTRY_COMPARE(removals_, 1);
        QTRY_VERIFY(!panels_->areOffered());
        surface_->show();
        QVERIFY(!surface_->isVisible());
        server_->start();
        QTRY_VERIFY_WITH_TIMEOUT(panels_->areOffered(), 20000);
        QTRY_COMPARE(panels_->screens().mainWorkArea(), QRect(0, 0, 1280, 800));
        surface_->show();
        QTRY_COMPARE(pictures(), 1);
    }
};

static const RegisteredTest<LayerPanelsTests> registered;
#include "LayerPanelsTests.moc"
