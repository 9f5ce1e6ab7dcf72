#include <VelmoraMac/StyleKit/Contrast.h>

#include <QTest>

#include <Rehearsal/Scenes.h>
#include <Runner/RegisteredTest.h>

#include <array>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

constexpr double smallText = 4.5; // The ratios that the guidelines ask for.
constexpr double largeText = 3;

// The states in which a text rests; those on the way between two of them are not judged.
constexpr std::array restingScenes = {"popover-waiting",   "popover-paused",         "popover-cleaned",
                                      "popover-protected", "popover-active",         "toast-cleaned",
                                      "toast-warning",     "settings-general-whole", "settings-cleaning",
                                      "settings-history",  "settings-history-empty", "details",
                                      "update-found",      "update-downloading",     "update-failed"};

// A text as it is seen: its colour with all opacities above it.
struct SeenText {
    QString text;
    QColor color;
    QRect place; // In the window.
    double wanted = smallText;
};

bool isText(const QQuickItem &item)
{
    return item.inherits("QQuickText") || item.inherits("QQuickTextEdit");
}

bool isSymbol(const QQuickItem &item)
{
    return item.inherits("SymbolImage") && !item.property("symbolName").toString().isEmpty();
}

void collect(QQuickItem &item, double opacity, const QRectF &clip, QList<SeenText> &texts)
{
    const double seen = opacity * item.opacity();
    const QRectF frame = item.mapRectToScene(item.boundingRect());
    if (!item.isVisible() || seen < 0.02 || !item.isEnabled())
        return;
    const QRectF inside = item.clip() ? clip.intersected(frame) : clip;
    if (isText(item) && !item.property("text").toString().isEmpty()) {
        const auto font = item.property("font").value<QFont>();
        const QSizeF size(item.property("contentWidth").toDouble(),
                          item.property("contentHeight").toDouble());
        auto color = item.property("color").value<QColor>();
        color.setAlphaF(color.alphaF() * static_cast<float>(seen));
        const QRect place = QRectF(frame.topLeft(), size).intersected(frame).intersected(inside).toRect();
        const bool isLarge =
            font.pixelSize() >= 24 || (font.pixelSize() >= 18.66 && font.weight() >= QFont::Bold);
        if (!place.isEmpty())
            texts.append({item.property("text").toString(), color, place, isLarge ? largeText : smallText});
    }
    if (isSymbol(item)) {
        auto color = item.property("color").value<QColor>();
        color.setAlphaF(color.alphaF() * static_cast<float>(seen));
        // Its corners are empty.
        const QRectF drawn =
            frame.adjusted(frame.width() / 6, frame.height() / 6, -frame.width() / 6, -frame.height() / 6);
        texts.append(
            {item.property("symbolName").toString(), color, drawn.intersected(inside).toRect(), largeText});
    }
    for (QQuickItem *child : item.childItems())
        collect(*child, seen, inside, texts);
}

void hideTexts(QQuickItem &item)
{
    if (isText(item) || isSymbol(item))
        item.setOpacity(0);
    for (QQuickItem *child : item.childItems())
        hideTexts(*child);
}

// Where the ground suits the text least.
double worstRatio(const SeenText &text, const QImage &ground)
{
    double worst = 21;
    const QRect place = text.place.intersected(ground.rect());
    for (int y = place.top(); y <= place.bottom(); ++y)
        for (int x = place.left(); x <= place.right(); ++x)
            worst = std::min(worst, Contrast::ratio(text.color, ground.pixelColor(x, y)));
    return worst;
}

} // namespace

// Contrast as it is seen: the colours of the texts, with every opacity, on the pixels behind them.
class ContrastOnPixelsTests : public QObject {
    Q_OBJECT

private Q_SLOTS:

    void initTestCase() { prepareFont(u"Inter"_s); }

    void everyTextCanBeRead_data()
    {
        QTest::addColumn<QString>("scene");
        QTest::addColumn<Velmora::VelmoraTheme>("theme");
        QTest::addColumn<bool>("isDark");
        for (const char *scene : restingScenes)
            for (const VelmoraTheme theme :
                 {VelmoraTheme::aurora, VelmoraTheme::ocean, VelmoraTheme::light, VelmoraTheme::graphite})
                for (const bool isDark : {false, true})
                    QTest::addRow("%s %s%s", scene, qPrintable(rawValue(theme)), isDark ? " dark" : "")
                        << QString::fromLatin1(scene) << theme << isDark;
    }

    void everyTextCanBeRead()
    {
        QFETCH(QString, scene);
        QFETCH(Velmora::VelmoraTheme, theme);
        QFETCH(bool, isDark);
        QStringList tooFaint;
        for (const auto drift :
             {0s, 9s, 18s}) { // The backdrop's glows at both ends of their way and between.
            StageSetup setup = everydaySetup();
            setup.theme = theme;
            setup.darkAppearance = isDark;
            Stage stage(setup);
            const Scene *wanted = sceneNamed(scene);
            QVERIFY(wanted != nullptr);
            QQuickItem *view = wanted->show(stage);
            QVERIFY2(view != nullptr, qPrintable(stage.warnings.join(u'\n')));
            stage.pass(wanted->time);
            if (scene != u"popover-active") // Its pulse has passed by then.
                stage.clock().pass(drift);
            stage.pass(1ms);
            QList<SeenText> texts;
            collect(*view, 1, QRectF(QPointF(), QSizeF(stage.window()->size())), texts);
            QVERIFY(!texts.isEmpty());
            hideTexts(*view);
            const QImage ground = stage.picture();
            for (const SeenText &text : std::as_const(texts)) {
                const double ratio = worstRatio(text, ground);
                if (qEnvironmentVariableIsSet("VELMORA_PRINT_CONTRAST"))
                    qInfo("%.2f of %.1f  %s", ratio, text.wanted, qPrintable(text.text.left(40)));
                if (ratio < text.wanted)
                    tooFaint.append(u"%1: %2"_s.arg(text.text.left(40)).arg(ratio, 0, 'f', 2));
            }
        }
        tooFaint.removeDuplicates();
        QVERIFY2(tooFaint.isEmpty(), qPrintable(tooFaint.join(u", "_s)));
    }

    void aFaintTextWouldBeSeen()
    {
        QImage ground(20, 10, QImage::Format_RGB32);
        ground.fill(Qt::white);
        ground.setPixelColor(7, 3, QColor(120, 120, 120));
        const SeenText text{u"a"_s, QColor(Qt::black), QRect(0, 0, 20, 10), smallText};
        QVERIFY(worstRatio(text, ground) < 5);
        ground.setPixelColor(7, 3, Qt::white);
        QVERIFY(worstRatio(text, ground) > 20);
    }
};

static const RegisteredGuiTest<ContrastOnPixelsTests> registered;
#include "ContrastOnPixelsTests.moc"
