#include <VelmoraMac/Drawing/KeptDrawing.h>
#include <VelmoraMac/Drawing/PixelGrid.h>
#include <VelmoraMac/Drawing/RoundedBox.h>

#include <QPainter>
#include <QTest>

#include <Runner/RegisteredTest.h>

#include <cmath>
#include <set>

namespace {

constexpr std::array scales = {1.0, 1.25, 1.5, 1.75, 2.0};

// `box` at `place` in a window with `scale` pixels a point.
QImage pictureOf(RoundedBox &box, const QPointF &place, double scale)
{
    QImage image(qCeil(100 * scale), qCeil(60 * scale), QImage::Format_ARGB32_Premultiplied);
    image.setDevicePixelRatio(scale);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.translate(place);
    box.draw(painter);
    return image;
}

// The different opacities along the row or the column through the middle.
std::set<int> opacities(const QImage &image, Qt::Orientation along)
{
    std::set<int> found;
    const bool isRow = along == Qt::Horizontal;
    for (int i = 0; i < (isRow ? image.width() : image.height()); ++i)
        found.insert(qAlpha(isRow ? image.pixel(i, image.height() / 2) : image.pixel(image.width() / 2, i)));
    return found;
}

} // namespace

class RoundedBoxTests : public QObject {
    Q_OBJECT

private Q_SLOTS:

    void itsEdgesLieBetweenPixelsAtEveryScale()
    {
        RoundedBox box;
        box.setSize({83.3, 41});
        box.setProperty("radius", 12);
        for (const double scale : scales) {
            for (const QPointF place : {QPointF(7, 9), QPointF(7.4, 9.7)}) {
                const QImage image = pictureOf(box, place, scale);
                QCOMPARE(opacities(image, Qt::Horizontal), (std::set<int>{0, 255}));
                QCOMPARE(opacities(image, Qt::Vertical), (std::set<int>{0, 255}));
            }
        }
    }

    void itsCornersAreSmooth()
    {
        RoundedBox box;
        box.setSize({80, 40});
        box.setProperty("radius", 14);
        for (const double scale : scales) {
            const QImage image = pictureOf(box, {10, 10}, scale);
            std::set<int> found;
            for (int y = 0; y < image.height(); ++y)
                for (int x = 0; x < image.width(); ++x)
                    found.insert(qAlpha(image.pixel(x, y)));
            QVERIFY2(found.size() > 8, qPrintable(QString::number(scale)));
        }
    }

    void itsOutlineIsAWholeNumberOfPixelsWide()
    {
        RoundedBox box;
        box.setSize({80, 40});
        box.setProperty("color", QColor(Qt::transparent));
        box.setProperty("borderColor", QColor(Qt::black));
        for (const double scale : scales) {
            const QImage image = pictureOf(box, {10.2, 10.3}, scale);
            QCOMPARE(opacities(image, Qt::Horizontal), (std::set<int>{0, 255}));
            int covered = 0;
            for (int x = 0; x < image.width(); ++x)
                covered += qAlpha(image.pixel(x, image.height() / 2)) == 255 ? 1 : 0;
            QCOMPARE(covered, 2 * std::max(1, qRound(scale)));
        }
    }

    void aLineIsEquallyWideWhereverItStands()
    {
        RoundedBox line;
        line.setSize({80, 1});
        for (const double scale : scales) {
            for (int y = 0; y < 20; ++y) {
                const QImage image = pictureOf(line, {10, static_cast<double>(y)}, scale);
                int covered = 0;
                for (int row = 0; row < image.height(); ++row)
                    covered += qAlpha(image.pixel(image.width() / 2, row)) == 255 ? 1 : 0;
                QCOMPARE(covered, qRound(scale));
            }
        }
    }

    void aMovingBoxMayEndWithinAPixel()
    {
        RoundedBox box;
        box.setSize({80, 40});
        box.setProperty("aligned", false);
        QVERIFY(opacities(pictureOf(box, {10.5, 10}, 1), Qt::Horizontal).size() > 2);
    }

    void aKeptDrawingIsDrawnOnceForOneSizeAndTurn()
    {
        KeptDrawing kept;
        int drawn = 0;
        const auto paint = [&](const QTransform &transform) {
            QImage image(50, 50, QImage::Format_ARGB32_Premultiplied);
            image.fill(Qt::transparent);
            QPainter painter(&image);
            painter.setTransform(transform);
            kept.paint(painter, QRectF(4, 4, 20, 20), [&](QPainter &pen) {
                ++drawn;
                pen.fillRect(QRectF(4, 4, 20, 20), Qt::black);
            });
            painter.end();
            return image;
        };
        QCOMPARE(qAlpha(paint({}).pixel(4, 4)), 255);
        paint(QTransform::fromTranslate(3.4, 0));
        QCOMPARE(drawn, 1);
        paint(QTransform::fromScale(1.25, 1.25));
        QCOMPARE(drawn, 2);
        const QImage turned = paint(QTransform().translate(25, 5).rotate(45));
        QCOMPARE(drawn, 3);
        QCOMPARE(qAlpha(turned.pixel(25, 25)), 255);
        kept.forget();
        paint(QTransform().translate(25, 5).rotate(45));
        QCOMPARE(drawn, 4);
    }
};

static const RegisteredGuiTest<RoundedBoxTests> registered;
#include "RoundedBoxTests.moc"
