#include <VelmoraMac/StyleKit/Contrast.h>
#include <VelmoraMac/StyleKit/PanelGround.h>
#include <VelmoraMac/StyleKit/Surroundings.h>
#include <VelmoraMac/VelmoraThemePalette.h>

#include <QMetaProperty>
#include <QTest>

#include <Runner/RegisteredTest.h>

#include <array>

using namespace Qt::StringLiterals;

namespace {

// Components in hundredths as a designer writes them; the system's colours in bytes.
QColor c(double red, double green, double blue, double alpha = 1)
{
    return QColor::fromRgbF(float(red), float(green), float(blue), float(alpha));
}

QColor w(double alpha = 1)
{
    return c(1, 1, 1, alpha);
}

QColor k(double alpha)
{
    return c(0, 0, 0, alpha);
}

QColor system(int red, int green, int blue, double alpha = 1)
{
    QColor color(red, green, blue);
    color.setAlphaF(float(alpha));
    return color;
}

constexpr std::array themes = {VelmoraTheme::aurora, VelmoraTheme::ocean, VelmoraTheme::light,
                               VelmoraTheme::graphite};

} // namespace

class VelmoraThemePaletteTests : public QObject {
    Q_OBJECT

    static void field(const char *name, std::array<QVariant, 4> values)
    {
        for (size_t i = 0; i < values.size(); ++i)
            QTest::addRow("%s of %s", name, qPrintable(rawValue(themes[i])))
                << QByteArray(name) << themes[i] << values[i];
    }

    static QVariant colors(const QList<QColor> &list) { return QVariant::fromValue(list); }

private Q_SLOTS:

    void everyColourOfEveryThemeIsAsDesigned_data()
    {
        QTest::addColumn<QByteArray>("name");
        QTest::addColumn<Velmora::VelmoraTheme>("theme");
        QTest::addColumn<QVariant>("value");

        field("backgroundColors", {colors({c(.05, .02, .18), c(.2, .04, .42), c(.5, .08, .68)}),
                                   colors({c(.02, .12, .2), c(.02, .34, .48), c(.05, .76, .82)}),
                                   colors({c(.98, .99, 1), c(.9, .97, 1), c(.82, .94, .98)}),
                                   colors({c(.06, .06, .06), c(.12, .12, .12), c(.18, .16, .14)})});
        field("glowPrimary", {system(255, 55, 95, .34), system(90, 200, 245, .32), c(.16, .78, .92, .2),
                              c(.9, .58, .38, .18)});
        field("glowSecondary", {system(10, 132, 255, .24), system(10, 132, 255, .26), c(.82, .32, 1, .16),
                                c(.56, .56, .62, .15)});
        field("primaryText", {w(), w(), c(.06, .07, .09), w()});
        field("secondaryText", {w(.72), w(.74), c(.18, .2, .24, .76), w(.72)});
        field("mutedText", {w(.52), w(.54), c(.2, .22, .27, .55), w(.5)});
        field("cardFill", {w(.1), w(.11), w(.58), k(.24)});
        field("cardStroke", {w(.14), w(.15), k(.08), w(.11)});
        field("linkRowFill", {k(.16), k(.15), k(.055), k(.24)});
        field("successAccent", {system(102, 212, 207), c(.42, 1, .82), c(.04, .78, .66), c(.42, .94, .74)});
        field("dangerAccent", {system(255, 55, 95), c(1, .48, .64), c(.92, .24, .5), c(1, .42, .54)});
        field("infoAccent", {system(90, 200, 245), c(.42, .92, 1), c(.04, .64, .9), c(.54, .82, 1)});
        field("warningText", {system(255, 214, 10, .92), c(1, .86, .34), c(.88, .56, 0), c(1, .84, .28)});
        field("badgeText", {k(.72), k(.76), k(.78), k(.76)});
        field("overlayScrim", {k(.3), k(.28), w(.46), k(.42)});
        field("materialOpacity", {.72, .72, .86, .68});
        field("switchColors",
              {colors({c(.98, .34, .84), c(.16, .9, .92)}), colors({c(.14, .78, .96), c(.46, 1, .74)}),
               colors({c(.02, .66, .92), c(.1, .86, .72)}), colors({c(.34, .34, .36), c(.78, .68, .58)})});
    }

    void everyColourOfEveryThemeIsAsDesigned()
    {
        QFETCH(QByteArray, name);
        QFETCH(Velmora::VelmoraTheme, theme);
        QFETCH(QVariant, value);

        const VelmoraThemePalette palette = VelmoraThemePalette::of(theme, SystemColors::of(true));

        const QMetaObject &fields = VelmoraThemePalette::staticMetaObject;
        QCOMPARE(fields.property(fields.indexOfProperty(name)).readOnGadget(&palette), value);
    }

    void theFieldsStandInTheirOrder()
    {
        QStringList names;
        const QMetaObject &fields = VelmoraThemePalette::staticMetaObject;
        for (int i = 0; i < fields.propertyCount(); ++i)
            names.append(QLatin1String(fields.property(i).name()));

        QCOMPARE(names.join(u' '),
                 u"backgroundColors glowPrimary glowSecondary primaryText secondaryText mutedText "
                 u"cardFill cardStroke linkRowFill successAccent dangerAccent infoAccent warningText "
                 u"badgeText overlayScrim materialOpacity switchColors"_s);
    }

    void theSystemsColoursFollowTheAppearance()
    {
        const VelmoraThemePalette light =
            VelmoraThemePalette::of(VelmoraTheme::aurora, SystemColors::of(false));

        QCOMPARE(light.successAccent, QColor(0, 199, 190));
        QCOMPARE(light.dangerAccent, QColor(255, 45, 85));
        QCOMPARE(light.infoAccent, QColor(85, 190, 240));
    }

    void themesAreOfferedInTheirOrderAndNamedInTheChosenLanguage()
    {
        QStringList names;
        for (const int value : Surroundings::themes()) {
            const auto theme = static_cast<VelmoraTheme>(value);
            names.append(Surroundings::themeName(theme, AppLanguage::english) + u' ' +
                         Surroundings::themeName(theme, AppLanguage::german));
        }
        QCOMPARE(names,
                 QStringList({u"Aurora Aurora"_s, u"Ocean Ocean"_s, u"Light Hell"_s, u"Graphite Graphit"_s}));
    }

    void textsCanBeRead_data()
    {
        QTest::addColumn<Velmora::VelmoraTheme>("theme");
        for (const VelmoraTheme theme : themes)
            QTest::addRow("%s", qPrintable(rawValue(theme))) << theme;
    }

    void textsCanBeRead()
    {
        QFETCH(Velmora::VelmoraTheme, theme);
        const VelmoraThemePalette p = VelmoraThemePalette::of(theme, SystemColors::of(true));

        for (const QColor &ground : PanelGround::behindCards(p)) {
            const QList<QColor> texts = {p.primaryText,
                                         Surroundings::legible(p.secondaryText, p),
                                         Surroundings::legible(p.successAccent, p),
                                         Surroundings::legible(p.dangerAccent, p),
                                         Surroundings::legible(p.infoAccent, p),
                                         Surroundings::legible(p.warningText, p)};
            for (const QColor &text : texts)
                QVERIFY2(Contrast::ratio(text, ground) >= 4.5,
                         qPrintable(text.name(QColor::HexArgb) + u" on "_s + ground.name()));
        }
    }

    void legibleTintsKeepWhatIsReadableAndMendTheRest()
    {
        const VelmoraThemePalette dark =
            VelmoraThemePalette::of(VelmoraTheme::graphite, SystemColors::of(true));
        const VelmoraThemePalette light =
            VelmoraThemePalette::of(VelmoraTheme::light, SystemColors::of(false));

        QCOMPARE(Surroundings::legible(dark.successAccent, dark), dark.successAccent);
        QVERIFY(Surroundings::legible(light.successAccent, light) != light.successAccent);
        QVERIFY(Contrast::ratio(Surroundings::legible(light.successAccent, light), QColor(240, 250, 255)) >=
                4.5);
    }

    void contrastIsReckonedAsTheGuidelinesDo()
    {
        QCOMPARE(Contrast::ratio(Qt::black, Qt::white), 21.0);
        QCOMPARE(Contrast::ratio(QColor(0x77, 0x77, 0x77), Qt::white) > 4.47, true);
        QCOMPARE(Contrast::ratio(QColor(0x77, 0x77, 0x77), Qt::white) < 4.49, true);
    }

    void smallPrintOfTheFormsCanBeRead()
    {
        for (const bool isDark : {false, true}) {
            const SystemColors s = SystemColors::of(isDark);
            const QColor pane = Contrast::over(s.paneFill, s.windowBackground);
            const QColor card = Contrast::over(s.cardFill, pane);
            for (const QColor &ground : {s.windowBackground, pane, card, Contrast::over(s.controlFill, card)})
                for (const QColor &text : {s.label, s.secondaryLabel})
                    QVERIFY2(Contrast::ratio(text, ground) >= 4.5, qPrintable(ground.name()));
        }
    }
};

static const RegisteredTest<VelmoraThemePaletteTests> registered;
#include "VelmoraThemePaletteTests.moc"
