#include <QDir>
#include <QTest>

#include <Rehearsal/Scenes.h>
#include <Runner/RegisteredTest.h>

using namespace Qt::StringLiterals;

// Holds the look against pictures in Data/Pictures. After a wanted change:
// VELMORA_RENEW_PICTURES=1 PictureTests, then look at every picture that changed.
class PictureTests : public QObject {
    Q_OBJECT

    // Pixels may differ a little where fonts or arithmetic of another machine round differently.
    static constexpr int toleratedDifference = 24; // Of a component.
    static constexpr double toleratedPart = 0.002; // Of all pixels, beyond that difference.

    static QString reference(const QString &name) { return u"" VELMORA_PICTURES "/"_s + name + u".png"_s; }

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

    static void add(const char *scene, VelmoraTheme theme, AppLanguage language, bool isDark)
    {
        QTest::addRow("%s-%s-%s%s", scene, qPrintable(rawValue(theme)), qPrintable(rawValue(language)),
                      isDark ? "-dark" : "")
            << QString::fromLatin1(scene) << theme << language << isDark;
    }

private Q_SLOTS:

    void initTestCase() { prepareFont(u"Inter"_s); }

    void looksAsItShould_data()
    {
        QTest::addColumn<QString>("scene");
        QTest::addColumn<Velmora::VelmoraTheme>("theme");
        QTest::addColumn<Velmora::AppLanguage>("language");
        QTest::addColumn<bool>("isDark");

        for (const VelmoraTheme theme :
             {VelmoraTheme::aurora, VelmoraTheme::ocean, VelmoraTheme::light, VelmoraTheme::graphite})
            add("popover-cleaned", theme, AppLanguage::german, theme != VelmoraTheme::light);
        add("popover-waiting", VelmoraTheme::graphite, AppLanguage::english, true);
        add("popover-paused", VelmoraTheme::aurora, AppLanguage::german, true);
        add("popover-opening", VelmoraTheme::ocean, AppLanguage::english, true);
        add("toast-cleaned", VelmoraTheme::graphite, AppLanguage::english, false);
        add("toast-warning", VelmoraTheme::graphite, AppLanguage::german, false);
        add("toast-entering", VelmoraTheme::graphite, AppLanguage::english, false);
        for (const bool isDark : {false, true}) {
            add("settings-general", VelmoraTheme::graphite, AppLanguage::german, isDark);
            add("settings-history", VelmoraTheme::graphite, AppLanguage::english, isDark);
        }
        add("settings-cleaning", VelmoraTheme::graphite, AppLanguage::english, false);
        add("settings-history-empty", VelmoraTheme::graphite, AppLanguage::german, true);
        add("details", VelmoraTheme::graphite, AppLanguage::english, false);
    }

    void looksAsItShould()
    {
        QFETCH(QString, scene);
        QFETCH(Velmora::VelmoraTheme, theme);
        QFETCH(Velmora::AppLanguage, language);
        QFETCH(bool, isDark);
        StageSetup setup = everydaySetup();
        setup.theme = theme;
        setup.language = language;
        setup.darkAppearance = isDark;
        Stage stage(setup);
        const Scene *wanted = sceneNamed(scene);
        QVERIFY(wanted != nullptr);
        QVERIFY2(wanted->show(stage) != nullptr, qPrintable(stage.warnings.join(u'\n')));
        stage.pass(wanted->time);
        const QImage picture = stage.picture().convertToFormat(QImage::Format_RGB32);
        const QString name = QString::fromLatin1(QTest::currentDataTag());
        if (qEnvironmentVariableIsSet("VELMORA_RENEW_PICTURES"))
            QVERIFY(picture.save(reference(name), "PNG", 0));

        const QImage expected(reference(name));
        QVERIFY2(!expected.isNull(), qPrintable(reference(name)));
        QCOMPARE(picture.size(), expected.size());
        QImage difference;
        const int count = differing(picture, expected, difference);
        if (count > toleratedPart * picture.width() * picture.height()) {
            const QString beside = QDir::current().absoluteFilePath(name);
            picture.save(beside + u"-actual.png"_s);
            difference.save(beside + u"-difference.png"_s);
            QFAIL(qPrintable(u"%1 pixels differ; see %2-difference.png"_s.arg(count).arg(beside)));
        }
    }

    void movingThingsStandInTheSamePlacesAtAnyScale_data()
    {
        QTest::addColumn<QString>("scene");
        QTest::addColumn<Velmora::VelmoraTheme>("theme");
        QTest::addColumn<bool>("isDark");
        QTest::newRow("popover-opening-ocean-english-dark")
            << u"popover-opening"_s << VelmoraTheme::ocean << true;
        QTest::newRow("toast-entering-graphite-english")
            << u"toast-entering"_s << VelmoraTheme::graphite << false;
    }

    // Run once more with QT_SCALE_FACTOR=2.
    void movingThingsStandInTheSamePlacesAtAnyScale()
    {
        QFETCH(QString, scene);
        QFETCH(Velmora::VelmoraTheme, theme);
        QFETCH(bool, isDark);
        StageSetup setup = everydaySetup();
        setup.theme = theme;
        setup.darkAppearance = isDark;
        Stage stage(setup);
        const Scene *wanted = sceneNamed(scene);
        QVERIFY2(wanted->show(stage) != nullptr, qPrintable(stage.warnings.join(u'\n')));
        stage.pass(wanted->time);
        QCOMPARE(stage.window()->effectiveDevicePixelRatio(),
                 qEnvironmentVariable("QT_SCALE_FACTOR", u"1"_s).toDouble());
        const QImage expected(reference(QString::fromLatin1(QTest::currentDataTag())));
        QVERIFY(!expected.isNull());
        QImage picture =
            stage.picture().scaled(expected.size(), Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
        picture.setDevicePixelRatio(1);
        QImage difference;
        // Edges are a little sharper at a larger scale; what stands elsewhere differs by far more,
        // and in more places.
        const int count = differing(picture.convertToFormat(QImage::Format_RGB32), expected, difference, 48);
        QVERIFY2(count < 0.01 * expected.width() * expected.height(), qPrintable(QString::number(count)));
    }
};

static const RegisteredGuiTest<PictureTests> registered;
#include "PictureTests.moc"
