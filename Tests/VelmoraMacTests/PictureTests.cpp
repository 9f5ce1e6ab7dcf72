#include <QDir>
#include <QPainter>
#include <QTest>

#include <Rehearsal/ItemTree.h>
#include <Rehearsal/Scenes.h>
#include <Runner/RegisteredTest.h>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

// Holds the look against pictures in Data/Pictures. After a wanted change:
// VELMORA_RENEW_PICTURES=1 PictureTests, then look at every picture that changed.
class PictureTests : public QObject {
    Q_OBJECT

    // Nothing but the last bit of a component, where arithmetic of another machine rounds differently.
    static constexpr int toleratedDifference = 1;

    static QString scale() { return qEnvironmentVariable("QT_SCALE_FACTOR", u"1"_s); }

    // With another Qt, and another edition of the font with it, each letter is a little different, and so may be where a
    // line of them breaks. There, surfaces of so many points are compared by their mean colour, and what is as wide as
    // its text may be a little wider or narrower.
    static bool drawsLettersAlike() { return QLatin1StringView(qVersion()).startsWith("6.4."_L1); }

    static constexpr int coarsePoints = 32;
    static constexpr int coarseTolerance = 8;
    static constexpr int coarseWidth = 2;

    static QString reference(const QString &name)
    {
        const QString suffix = scale() == u"1" ? QString() : u"@"_s + scale();
        return u"" VELMORA_PICTURES "/"_s + name + suffix + u".png"_s;
    }

    // `part`, in points, of a picture that has scale() pixels a point; all of it when `part` is empty.
    static QImage cropped(const QImage &picture, const QRect &part)
    {
        if (part.isEmpty())
            return picture;
        const double pixels = scale().toDouble();
        const QRectF place(part.x() * pixels, part.y() * pixels, part.width() * pixels,
                           part.height() * pixels);
        // Whole pixels: the last one of a window whose size is a fraction of pixels is never drawn.
        return picture.copy(QRect(QPoint(qCeil(place.left()), qCeil(place.top())),
                                  QPoint(qFloor(place.right()) - 1, qFloor(place.bottom()) - 1)));
    }

    static void compare(const QImage &picture, const QString &name)
    {
        if (qEnvironmentVariableIsSet("VELMORA_RENEW_PICTURES"))
            QVERIFY(picture.save(reference(name), "PNG", 0));
        const QImage expected(reference(name));
        QVERIFY2(!expected.isNull(), qPrintable(reference(name)));
        const int wider = std::abs(picture.width() - expected.width());
        QVERIFY(wider <= (drawsLettersAlike() ? 0 : coarseWidth));
        QCOMPARE(picture.height(), expected.height());
        QImage difference;
        const int count = drawsLettersAlike()
                              ? differing(picture, expected, difference)
                              : differing(coarse(picture, expected.size()), coarse(expected, expected.size()),
                                          difference, coarseTolerance);
        if (count == 0)
            return;
        const QString beside = QDir::current().absoluteFilePath(name);
        picture.save(beside + u"-actual.png"_s);
        difference.save(beside + u"-difference.png"_s);
        QFAIL(qPrintable(u"%1 pixels differ; see %2-difference.png"_s.arg(count).arg(beside)));
    }

    // The mean colours of the surfaces that a picture of this size has.
    static QImage coarse(const QImage &picture, const QSize &size)
    {
        const double pixels = coarsePoints * scale().toDouble();
        const QSize cells(qMax(1, qRound(size.width() / pixels)), qMax(1, qRound(size.height() / pixels)));
        return picture.scaled(cells, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    }

    // How many pixels differ too much; `difference` shows where.
    static int differing(const QImage &a, const QImage &b, QImage &difference,
                         int tolerated = toleratedDifference)
    {
        difference = QImage(a.size(), QImage::Format_RGB32);
        int count = 0;
        for (int y = 0; y < a.height(); ++y) {
            for (int x = 0; x < a.width(); ++x) {
                const QColor p = a.pixelColor(x, y);
                const QColor q = b.pixelColor(x, y);
                const int most = std::max({std::abs(p.red() - q.red()), std::abs(p.green() - q.green()),
                                           std::abs(p.blue() - q.blue())});
                count += most > tolerated ? 1 : 0;
                difference.setPixelColor(x, y, most > tolerated ? QColor(Qt::red) : QColor(most, most, most));
            }
        }
        return count;
    }

    static void addRow(const char *scene, VelmoraTheme theme, AppLanguage language, const QRect &part = {})
    {
        QTest::addRow("%s-%s-%s", scene, qPrintable(rawValue(theme)), qPrintable(rawValue(language)))
            << QString::fromLatin1(scene) << theme << language << part;
    }

    static void addColumns()
    {
        QTest::addColumn<QString>("scene");
        QTest::addColumn<Velmora::VelmoraTheme>("theme");
        QTest::addColumn<Velmora::AppLanguage>("language");
        QTest::addColumn<QRect>("part");
    }

    static StageSetup setupOf(VelmoraTheme theme, AppLanguage language)
    {
        StageSetup setup = everydaySetup();
        setup.theme = theme;
        setup.language = language;
        setup.darkAppearance = theme != VelmoraTheme::light;
        return setup;
    }

private Q_SLOTS:

    void initTestCase() { prepareFont(u"Inter"_s); }

    void looksAsItShould_data()
    {
        addColumns();
        for (const int theme : Surroundings::themes())
            addRow("popover-cleaned", static_cast<VelmoraTheme>(theme), AppLanguage::german);
        addRow("popover-waiting", VelmoraTheme::graphite, AppLanguage::english);
        addRow("popover-paused", VelmoraTheme::aurora, AppLanguage::german);
        addRow("popover-opening", VelmoraTheme::ocean, AppLanguage::english);
        addRow("toast-cleaned", VelmoraTheme::graphite, AppLanguage::english);
        addRow("toast-warning", VelmoraTheme::graphite, AppLanguage::german);
        addRow("toast-entering", VelmoraTheme::graphite, AppLanguage::english);
        addRow("settings-general", VelmoraTheme::aurora, AppLanguage::german);
        addRow("settings-general", VelmoraTheme::light, AppLanguage::german);
        addRow("settings-history", VelmoraTheme::ocean, AppLanguage::english);
        addRow("settings-cleaning", VelmoraTheme::light, AppLanguage::english);
        addRow("settings-history-empty", VelmoraTheme::graphite, AppLanguage::german);
        addRow("details", VelmoraTheme::light, AppLanguage::english);
        addRow("update-found", VelmoraTheme::graphite, AppLanguage::english);
        addRow("update-downloading", VelmoraTheme::light, AppLanguage::english);
        // On the way from one state to another, where nothing else changes only the part that does.
        addRow("popover-growing", VelmoraTheme::aurora, AppLanguage::english, {0, 60, 306, 380});
        addRow("popover-toggling", VelmoraTheme::graphite, AppLanguage::english, {16, 10, 290, 60});
        addRow("popover-recolouring", VelmoraTheme::graphite, AppLanguage::english, {0, 290, 306, 90});
        addRow("popover-rolling", VelmoraTheme::graphite, AppLanguage::english, {16, 300, 274, 66});
        addRow("popover-active", VelmoraTheme::graphite, AppLanguage::english, {16, 110, 160, 140});
        addRow("popover-closing", VelmoraTheme::light, AppLanguage::english, {0, 0, 306, 120});
    }

    void looksAsItShould()
    {
        QFETCH(QString, scene);
        QFETCH(Velmora::VelmoraTheme, theme);
        QFETCH(Velmora::AppLanguage, language);
        QFETCH(QRect, part);
        Stage stage(setupOf(theme, language));
        const Scene *wanted = sceneNamed(scene);
        QVERIFY(wanted != nullptr);
        QVERIFY2(wanted->show(stage) != nullptr, qPrintable(stage.warnings.join(u'\n')));
        stage.pass(wanted->time);
        compare(cropped(stage.picture().convertToFormat(QImage::Format_RGB32), part),
                QString::fromLatin1(QTest::currentDataTag()));
    }

    void aCoarseLookSeesWhatIsAtAnotherPlaceOrMissing()
    {
        const QImage whole(u"" VELMORA_PICTURES "/settings-general-aurora-german.png"_s);
        const auto differs = [&whole](const QImage &other) {
            QImage difference;
            return differing(coarse(other, whole.size()), coarse(whole, whole.size()), difference,
                             coarseTolerance) > 0;
        };
        QVERIFY(!differs(whole));
        QVERIFY(differs(whole.copy(QRect(QPoint(4, 0), whole.size()))));
        QVERIFY(differs(whole.copy(QRect(QPoint(0, -4), whole.size()))));
        QImage other = whole;
        QPainter painter(&other);
        const QRect aSwitch(580, 98, 40, 24);
        painter.drawImage(aSwitch.topLeft(), whole, aSwitch.translated(-60, 0));
        painter.end();
        QVERIFY(differs(other));
    }

    void isSharpAtAnyScale_data()
    {
        addColumns();
        addRow("popover-cleaned", VelmoraTheme::aurora, AppLanguage::english, {150, 0, 156, 62});
        addRow("popover-protected", VelmoraTheme::light, AppLanguage::english, {16, 150, 130, 110});
        addRow("popover-paused", VelmoraTheme::graphite, AppLanguage::english, {60, 240, 150, 70});
        addRow("popover-opening", VelmoraTheme::graphite, AppLanguage::english, {0, 0, 160, 90});
        addRow("toast-warning", VelmoraTheme::graphite, AppLanguage::english, {0, 20, 250, 98});
        addRow("settings-general", VelmoraTheme::light, AppLanguage::english, {380, 260, 280, 110});
    }

    // Run with QT_SCALE_FACTOR 1.25, 1.5 and 2.
    void isSharpAtAnyScale()
    {
        if (scale() == u"1")
            QSKIP("Other pictures show this scale.");
        looksAsItShould();
    }

    void controlsAnswer_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("control");
        QTest::addColumn<QString>("act");
        QTest::newRow("hover-switch") << u"hover-switch"_s << u"Clean copied links"_s << u"hover"_s;
        QTest::newRow("hover-button") << u"hover-button"_s << u"Verlauf"_s << u"hover"_s;
        QTest::newRow("press-button") << u"press-button"_s << u"Verlauf"_s << u"press"_s;
        QTest::newRow("focus-button") << u"focus-button"_s << u"Verlauf"_s << u"focus"_s;
        QTest::newRow("focus-switch") << u"focus-switch"_s << u"Clean copied links"_s << u"focus"_s;
    }

    void controlsAnswer()
    {
        QFETCH(QString, name);
        QFETCH(QString, control);
        QFETCH(QString, act);
        Stage stage(setupOf(VelmoraTheme::graphite, AppLanguage::english));
        QQuickItem *popover = stage.showPopover();
        stage.pass(2000ms);
        QQuickItem *item = ItemTree::control(*popover, control);
        QVERIFY(item != nullptr);
        const QImage before = stage.picture();
        if (act == u"focus") {
            stage.window()->requestActivate();
            QVERIFY(QTest::qWaitForWindowActive(stage.window()));
            item->forceActiveFocus(Qt::TabFocusReason);
        } else {
            QTest::mouseMove(stage.window(), QPoint(2, 2));
            stage.pass(16ms);
            QTest::mouseMove(stage.window(), ItemTree::middle(*item));
        }
        if (act == u"press")
            QTest::mousePress(stage.window(), Qt::LeftButton, {}, ItemTree::middle(*item));
        stage.pass(500ms);
        if (act == u"hover")
            QVERIFY(item->property("hovered").toBool());
        const QRect place = item->mapRectToScene(item->boundingRect()).toRect().adjusted(-8, -8, 8, 8);
        const QImage picture = cropped(stage.picture().convertToFormat(QImage::Format_RGB32), place);
        QVERIFY(picture != cropped(before.convertToFormat(QImage::Format_RGB32), place));
        compare(picture, name);
    }

    void onlyWhatCanBeClickedAnswersToThePointer()
    {
        Stage stage(setupOf(VelmoraTheme::graphite, AppLanguage::english));
        QQuickItem *popover = stage.showPopover();
        stage.pass(2000ms);
        const auto *tiles = popover->findChild<QQuickItem *>(u"stats"_s);
        const QRect place = tiles->mapRectToScene(tiles->boundingRect()).toRect();
        QTest::mouseMove(stage.window(), QPoint(1, 1));
        stage.pass(500ms);
        const QImage before = cropped(stage.picture(), place);
        QTest::mouseMove(stage.window(), place.center());
        stage.pass(1ms);
        const QImage at = cropped(stage.picture(), place);
        QImage difference;
        QVERIFY(differing(at, before, difference, 12) == 0);
    }
};

static const RegisteredGuiTest<PictureTests> registered;
#include "PictureTests.moc"
