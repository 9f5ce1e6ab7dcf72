#include <VelmoraLinux/Panels/LayerPlacement.h>

#include <QTest>

#include <Runner/RegisteredTest.h>

#include <layer-shell-client-header.h>

namespace {
constexpr std::uint32_t top = ZWLR_LAYER_SURFACE_V1_ANCHOR_TOP;
constexpr std::uint32_t bottom = ZWLR_LAYER_SURFACE_V1_ANCHOR_BOTTOM;
constexpr std::uint32_t left = ZWLR_LAYER_SURFACE_V1_ANCHOR_LEFT;
constexpr std::uint32_t right = ZWLR_LAYER_SURFACE_V1_ANCHOR_RIGHT;
} // namespace

Q_DECLARE_METATYPE(std::optional<QPoint>)

class LayerPlacementTests : public QObject {
    Q_OBJECT

private Q_SLOTS:

    void aFrameIsHeldAtTheNearestEdges_data()
    {
        QTest::addColumn<QRect>("frame");
        QTest::addColumn<QRect>("workArea");
        QTest::addColumn<std::uint32_t>("anchors");
        QTest::addColumn<QMargins>("margins");
        const QRect whole(0, 0, 1280, 800);
        QTest::newRow("a toast") << QRect(920, 10, 342, 86) << whole << (top | right)
                                 << QMargins(0, 10, 18, 0);
        QTest::newRow("below a bar") << QRect(920, 42, 342, 86) << whole.adjusted(0, 32, 0, 0)
                                     << (top | right) << QMargins(0, 10, 18, 0);
        QTest::newRow("at the bottom left")
            << QRect(8, 406, 306, 386) << whole << (bottom | left) << QMargins(8, 0, 0, 8);
        QTest::newRow("on the second screen")
            << QRect(2254, 8, 306, 386) << QRect(1280, 0, 1280, 800) << (top | right) << QMargins(0, 8, 0, 0);
        QTest::newRow("left of and above the first")
            << QRect(-1270, -590, 306, 386) << QRect(-1280, -600, 1280, 600) << (top | left)
            << QMargins(10, 10, 0, 0);
        QTest::newRow("in the middle")
            << QRect(540, 300, 200, 200) << whole << (top | right) << QMargins(0, 300, 540, 0);
        QTest::newRow("reaching out")
            << QRect(1000, 10, 342, 86) << whole << (top | right) << QMargins(0, 10, -62, 0);
    }

    void aFrameIsHeldAtTheNearestEdges()
    {
        QFETCH(QRect, frame);
        QFETCH(QRect, workArea);
        QFETCH(std::uint32_t, anchors);
        QFETCH(QMargins, margins);
        const LayerPlacement placement = layerPlacement(frame, workArea);
        QCOMPARE(placement.anchors, anchors);
        QCOMPARE(placement.margins, margins);
    }

    void barsAreWhereTheClickWas_data()
    {
        QTest::addColumn<std::optional<QPoint>>("click");
        QTest::addColumn<QSize>("usable");
        QTest::addColumn<QRect>("area");
        const QSize below(1280, 768);
        const QSize beside(1240, 800);
        QTest::newRow("no click") << std::optional<QPoint>() << below << QRect(1280, 32, 1280, 768);
        QTest::newRow("top") << std::optional(QPoint(2500, 10)) << below << QRect(1280, 32, 1280, 768);
        QTest::newRow("bottom") << std::optional(QPoint(2500, 790)) << below << QRect(1280, 0, 1280, 768);
        QTest::newRow("left") << std::optional(QPoint(1290, 700)) << beside << QRect(1320, 0, 1240, 800);
        QTest::newRow("right") << std::optional(QPoint(2550, 700)) << beside << QRect(1280, 0, 1240, 800);
        QTest::newRow("no bar") << std::optional(QPoint(2500, 10)) << QSize(1280, 800)
                                << QRect(1280, 0, 1280, 800);
    }

    void barsAreWhereTheClickWas()
    {
        QFETCH(std::optional<QPoint>, click);
        QFETCH(QSize, usable);
        QFETCH(QRect, area);
        QCOMPARE(workAreaBeside(click, QRect(1280, 0, 1280, 800), usable), area);
    }
};

static const RegisteredTest<LayerPlacementTests> registered;
#include "LayerPlacementTests.moc"
