#include <VelmoraMac/StyleKit/Contrast.h>
#include <VelmoraMac/StyleKit/PanelGround.h>
#include <VelmoraMac/StyleKit/Surroundings.h>
#include <VelmoraMac/VelmoraThemePalette.h>

#include <QFile>
#include <QMap>
#include <QMetaProperty>
#include <QTest>

#include <Runner/RegisteredTest.h>

using namespace Qt::StringLiterals;

namespace {

// "0.05,0.02,0.18/0.5" or "pink/0.34".
QColor parsedColor(const QString &text)
{
    static const QMap<QString, QColor> names = {{u"white"_s, Qt::white},
                                                {u"black"_s, Qt::black},
                                                {u"pink"_s, QColor(255, 55, 95)},
                                                {u"cyan"_s, QColor(90, 200, 245)},
                                                {u"blue"_s, QColor(10, 132, 255)},
                                                {u"mint"_s, QColor(102, 212, 207)},
                                                {u"yellow"_s, QColor(255, 214, 10)}};
    const QStringList parts = text.split(u'/');
    const QStringList components = parts[0].split(u',');
    QColor color = components.size() == 3 ? QColor::fromRgbF(components[0].toFloat(), components[1].toFloat(),
                                                             components[2].toFloat())
                                          : names.value(parts[0]);
    if (parts.size() > 1)
        color.setAlphaF(parts[1].toFloat());
    return color;
}

// The rows of the designs: theme, field, and the words of the value.
QList<QStringList> designs()
{
    QList<QStringList> rows;
    QFile file(QStringLiteral(VELMORA_TEST_DATA "/ThemePalettes.txt"));
    if (!file.open(QIODevice::ReadOnly))
        return rows;
    for (const QString &line : QString::fromUtf8(file.readAll()).split(u'\n')) {
        if (const QStringList words = line.simplified().split(u' '); words.size() > 2 && words[0] != u"#")
            rows.append(words);
    }
    return rows;
}

QVariant parsedValue(const QStringList &words, const QVariant &like)
{
    if (like.typeId() == QMetaType::Double)
        return words[0].toDouble();
    if (like.typeId() == QMetaType::QColor)
        return parsedColor(words[0]);
    QList<QColor> colors;
    for (const QString &word : words)
        colors.append(parsedColor(word));
    return QVariant::fromValue(colors);
}

} // namespace

class VelmoraThemePaletteTests : public QObject {
    Q_OBJECT

private Q_SLOTS:

    void everyColourOfEveryThemeIsAsDesigned_data()
    {
        QTest::addColumn<Velmora::VelmoraTheme>("theme");
        for (const int theme : Surroundings::themes())
            QTest::addRow("%s", qPrintable(rawValue(static_cast<VelmoraTheme>(theme))))
                << static_cast<VelmoraTheme>(theme);
    }

    void everyColourOfEveryThemeIsAsDesigned()
    {
        QFETCH(Velmora::VelmoraTheme, theme);
        const VelmoraThemePalette palette = VelmoraThemePalette::of(theme, SystemColors::of(true));
        const QMetaObject &fields = VelmoraThemePalette::staticMetaObject;
        QStringList designed;
        for (const QStringList &row : designs()) {
            if (row[0] != rawValue(theme))
                continue;
            designed.append(row[1]);
            const QVariant value =
                fields.property(fields.indexOfProperty(row[1].toLatin1())).readOnGadget(&palette);
            QVERIFY2(value == parsedValue(row.mid(2), value), qPrintable(row.join(u' ')));
        }
        QCOMPARE(designed.size(), fields.propertyCount()); // A theme without a design fails here.
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
        // Later themes stand behind these.
        QCOMPARE(names.first(4),
                 QStringList({u"Aurora Aurora"_s, u"Ocean Ocean"_s, u"Light Hell"_s, u"Graphite Graphit"_s}));
    }

    void textsCanBeRead_data() { everyColourOfEveryThemeIsAsDesigned_data(); }

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
