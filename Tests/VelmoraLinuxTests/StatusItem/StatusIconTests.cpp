#include <VelmoraLinux/StatusItem/StatusIconImage.h>
#include <VelmoraLinux/StatusItem/StatusIconName.h>
#include <VelmoraMac/StyleKit/AppAssets.h>

#include <QFile>
#include <QPainter>
#include <QSvgRenderer>
#include <QTest>

#include <Runner/RegisteredTest.h>

#include <algorithm>
#include <cmath>

using namespace Qt::StringLiterals;

namespace {

const QString identifier = u"app.velmora.Velmora"_s;
constexpr double readable = 3;  // What the guidelines ask for signs that have a meaning.
constexpr double enough = 0.08; // Of the pixels: the strokes cover a quarter, thin ones in part only.

double luminance(QRgb color)
{
    const auto linear = [](int value) { return std::pow(value / 255.0, 2.2); };
    return 0.2126 * linear(qRed(color)) + 0.7152 * linear(qGreen(color)) + 0.0722 * linear(qBlue(color));
}

double contrast(QRgb one, QRgb other)
{
    const auto [dark, light] = std::minmax({luminance(one), luminance(other)});
    return (light + 0.05) / (dark + 0.05);
}

// The share of the icon's pixels, on a panel of `ground`, that stand out from it.
double readableShare(const QImage &icon, const QColor &ground)
{
    QImage panel(icon.size(), QImage::Format_RGB32);
    panel.fill(ground);
    QPainter(&panel).drawImage(0, 0, icon);
    int count = 0;
    for (int y = 0; y < panel.height(); ++y) {
        for (int x = 0; x < panel.width(); ++x)
            count += contrast(panel.pixel(x, y), ground.rgb()) >= readable ? 1 : 0;
    }
    return count / double(panel.width() * panel.height());
}

QImage markOf(int pixels, const QColor &color, IconEdge edge)
{
    return paintStatusIcon(AppAssets::image(u"velmora-menubar-template"_s, 68).image, pixels, color, 1, edge);
}

} // namespace

class StatusIconTests : public QObject {
    Q_OBJECT

private Q_SLOTS:

    void theIconIsReadableOnEveryPanel_data()
    {
        QTest::addColumn<QColor>("ground");
        for (const char *color : {"#000000", "#1e1e1e", "#303033", "#5a5a5e", "#767676", "#9a9a9a", "#c8c8cc",
                                  "#f2f2f2", "#ffffff", "#003c8f", "#b00020"})
            QTest::newRow(color) << QColor(QLatin1String(color));
    }

    void theIconIsReadableOnEveryPanel()
    {
        QFETCH(QColor, ground);
        for (const int pixels : {16, 22, 24, 32}) {
            for (const QColor &color : {QColor(0xf2, 0xf2, 0xf2), QColor(0x30, 0x30, 0x33)})
                QVERIFY2(readableShare(markOf(pixels, color, IconEdge::contrasting), ground) > enough,
                         qPrintable(u"%1 pixels"_s.arg(pixels)));
            const QColor chosen = isDarkGround(ground) ? Qt::white : Qt::black;
            QVERIFY(readableShare(markOf(pixels, chosen, IconEdge::none), ground) > enough);
        }
    }

    void everyStrengthHasItsDrawing_data()
    {
        QTest::addColumn<double>("opacity");
        QTest::addColumn<QString>("name");
        QTest::newRow("active") << 1.0 << u"app.velmora.Velmora-symbolic"_s;
        QTest::newRow("pulse, first step") << 0.8625 << u"app.velmora.Velmora-86-symbolic"_s;
        QTest::newRow("pulse, third step") << 0.5875 << u"app.velmora.Velmora-59-symbolic"_s;
        QTest::newRow("pulse") << 0.45 << u"app.velmora.Velmora-45-symbolic"_s;
        QTest::newRow("paused") << 0.38 << u"app.velmora.Velmora-38-symbolic"_s;
        QTest::newRow("pulse while paused") << 0.22 << u"app.velmora.Velmora-22-symbolic"_s;
    }

    void everyStrengthHasItsDrawing()
    {
        QFETCH(double, opacity);
        QFETCH(QString, name);
        QCOMPARE(StatusIconName::of(identifier, opacity), name);
        const auto folder = StatusIconName::folder(QCoreApplication::applicationDirPath(), identifier);
        QVERIFY(folder.has_value());
        const QString path = *folder + u"/hicolor/symbolic/apps/"_s + name + u".svg"_s;
        QSvgRenderer shape(path);
        QVERIFY(shape.isValid());
        QImage drawing(68, 68, QImage::Format_ARGB32_Premultiplied);
        drawing.fill(Qt::transparent);
        QPainter painter(&drawing);
        shape.render(&painter);
        painter.end();
        // The template's shape at this strength.
        const QImage mark = markOf(68, Qt::black, IconEdge::none);
        double most = 0;
        double apart = 0;
        for (int y = 0; y < 68; ++y) {
            for (int x = 0; x < 68; ++x) {
                most = std::max(most, qAlpha(drawing.pixel(x, y)) / 255.0);
                apart += std::abs(qAlpha(drawing.pixel(x, y)) - opacity * qAlpha(mark.pixel(x, y))) / 255;
            }
        }
        QVERIFY2(std::abs(most - opacity) < 0.01, qPrintable(QString::number(most)));
        QVERIFY2(apart < 68 * 68 * 0.01, qPrintable(QString::number(apart)));
        QFile file(path);
        QVERIFY(file.open(QIODevice::ReadOnly));
        QVERIFY(!file.readAll().contains("stroke")); // Panels do not colour strokes.
    }

    void desktopsThatColourIconsAreKnown()
    {
        QVERIFY(StatusIconName::areColouredBy(u"GNOME"_s));
        QVERIFY(StatusIconName::areColouredBy(u"ubuntu:GNOME"_s));
        QVERIFY(StatusIconName::areColouredBy(u"KDE"_s));
        QVERIFY(!StatusIconName::areColouredBy(u"XFCE"_s));
        QVERIFY(!StatusIconName::areColouredBy(u"sway"_s));
        QVERIFY(!StatusIconName::areColouredBy(QString()));
    }

    void withoutDrawingsThereIsNoName()
    {
        QCOMPARE(StatusIconName::folder(u"/nowhere/bin"_s, identifier), std::nullopt);
    }
};

static const RegisteredGuiTest<StatusIconTests> registered;
#include "StatusIconTests.moc"
