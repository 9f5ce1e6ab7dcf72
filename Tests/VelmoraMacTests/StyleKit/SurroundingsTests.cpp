#include <VelmoraMac/StyleKit/Contrast.h>
#include <VelmoraMac/StyleKit/PanelGround.h>
#include <VelmoraMac/StyleKit/Surroundings.h>

#include <QSignalSpy>
#include <QTest>

#include <Runner/RegisteredTest.h>

class SurroundingsTests : public QObject {
    Q_OBJECT

private Q_SLOTS:

    void lightIsAddedAndStaysWithinTheColours()
    {
        QCOMPARE(Surroundings::lit(QColor(100, 50, 240), 0.1, 1).rgba(), qRgb(126, 76, 255));
        QCOMPARE(Surroundings::lit(QColor(100, 50, 240), 0, 1), QColor(100, 50, 240));
    }

    void increasedContrastIsFollowedInEveryTheme_data()
    {
        QTest::addColumn<Velmora::VelmoraTheme>("theme");
        for (const int theme : Surroundings::themes())
            QTest::addRow("%s", qPrintable(rawValue(static_cast<VelmoraTheme>(theme))))
                << static_cast<VelmoraTheme>(theme);
    }

    void increasedContrastIsFollowedInEveryTheme()
    {
        QFETCH(Velmora::VelmoraTheme, theme);
        Surroundings surroundings;
        surroundings.setTheme(theme);
        const VelmoraThemePalette usual = surroundings.palette();
        QSignalSpy changes(&surroundings, &Surroundings::paletteChanged);
        surroundings.setIncreasedContrast(true);
        QCOMPARE(changes.size(), 1);
        const VelmoraThemePalette strong = surroundings.palette();

        QList<QColor> grounds = PanelGround::behindCards(strong);
        const QList<QColor> texts{Surroundings::legible(strong.secondaryText, strong),
                                  Surroundings::legible(strong.mutedText, strong),
                                  Surroundings::legible(strong.dangerAccent, strong)};
        for (const QColor &ground : grounds) {
            for (const QColor &text : texts)
                QVERIFY2(Contrast::ratio(text, ground) >= 7, qPrintable(text.name() + ground.name()));
            QVERIFY(Contrast::ratio(Surroundings::legibleLarge(strong.infoAccent, strong), ground) >= 4.5);
            QVERIFY2(Contrast::ratio(strong.cardStroke, ground) >= 3, qPrintable(ground.name()));
        }
        const SystemColors &forms = surroundings.colors();
        const QColor card =
            Contrast::over(forms.cardFill, Contrast::over(forms.paneFill, forms.windowBackground));
        QVERIFY(Contrast::ratio(forms.secondaryLabel, card) >= 7);
        QVERIFY(Contrast::ratio(forms.cardStroke, card) >= 3);
        QVERIFY(Contrast::ratio(usual.cardStroke, card) < 3);

        surroundings.setIncreasedContrast(false);
        QCOMPARE(surroundings.palette(), usual);
    }

    void saturationKeepsGreysAndLuminance()
    {
        QCOMPARE(Surroundings::lit(QColor(90, 90, 90), 0, 1.5), QColor(90, 90, 90));
        const QColor stronger = Surroundings::lit(QColor(150, 100, 80), 0, 1.5);
        QVERIFY(stronger.red() > 150 && stronger.blue() < 80);
        const auto luminance = [](const QColor &c) {
            return 0.2126 * c.red() + 0.7152 * c.green() + 0.0722 * c.blue();
        };
        QVERIFY(std::abs(luminance(stronger) - luminance(QColor(150, 100, 80))) < 1.5);
    }

    void whatIsTranslucentCoversMore()
    {
        const QColor lit = Surroundings::lit(QColor::fromRgbF(1, 1, 1, 0.11F), 0.075, 1.13);
        QVERIFY(std::abs(lit.alphaF() - 0.185) < 0.001);
    }
};

static const RegisteredTest<SurroundingsTests> registered;
#include "SurroundingsTests.moc"
