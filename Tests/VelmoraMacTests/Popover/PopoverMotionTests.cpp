#include <QTest>

#include <Rehearsal/ItemTree.h>
#include <Rehearsal/Scenes.h>
#include <Runner/RegisteredTest.h>

#include <algorithm>
#include <cmath>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

constexpr auto frame = 16ms;

// How much two pictures of one size differ: the mean over all components, 0 to 255.
double difference(const QImage &a, const QImage &b)
{
    double sum = 0;
    for (int y = 0; y < a.height(); ++y) {
        for (int x = 0; x < a.width(); ++x) {
            const QRgb p = a.pixel(x, y);
            const QRgb q = b.pixel(x, y);
            sum +=
                std::abs(qRed(p) - qRed(q)) + std::abs(qGreen(p) - qGreen(q)) + std::abs(qBlue(p) - qBlue(q));
        }
    }
    return sum / (3.0 * a.width() * a.height());
}

} // namespace

class PopoverMotionTests : public QObject {
    Q_OBJECT

private Q_SLOTS:

    void initTestCase() { prepareFont(u"Inter"_s); }

    void changesOfStateTakeTime_data()
    {
        QTest::addColumn<bool>("recolours");
        QTest::newRow("pausing") << false;
        QTest::newRow("another theme") << true;
    }

    void changesOfStateTakeTime()
    {
        QFETCH(bool, recolours);
        StageSetup setup = everydaySetup();
        setup.theme = VelmoraTheme::aurora;
        Stage stage(setup);
        stage.state->record(shopResult());
        stage.showPopover();
        stage.pass(2s);

        const QImage before = stage.picture();
        if (recolours)
            stage.state->setAppTheme(VelmoraTheme::light);
        else
            stage.state->setAutoCleanEnabled(false);
        const QImage first = stage.picture();
        stage.pass(160ms);
        const QImage middle = stage.picture();
        stage.pass(2s);
        const QImage after = stage.picture();

        const double whole = difference(before, after);
        QVERIFY(whole > 1);
        QVERIFY2(difference(before, first) < 0.02 * whole,
                 qPrintable(QString::number(difference(before, first))));
        QVERIFY(difference(before, middle) > 0.1 * whole);
        QVERIFY(difference(after, middle) > 0.02 * whole);
    }

    void theFirstCleaningGrowsThePopoverWithoutAJump()
    {
        Stage stage({});
        QQuickItem *popover = stage.showPopover();
        stage.pass(1s);
        const auto *hero = popover->findChild<QQuickItem *>(u"hero"_s);
        const auto *card = popover->findChild<QQuickItem *>(u"lastLink"_s);
        const double shortHero = hero->height();
        double heroHeight = shortHero;
        double cardHeight = card->height();

        stage.state->record(shopResult());
        for (auto time = 0ms; time < 320ms; time += frame) {
            if (time > 0ms)
                stage.pass(frame);
            const QImage picture = stage.picture();
            QCOMPARE(popover->height(), static_cast<double>(stage.window()->height()));
            QVERIFY2(hero->height() >= heroHeight && hero->height() < heroHeight + 20,
                     qPrintable(QString::number(hero->height())));
            QVERIFY(card->height() >= cardHeight && card->height() < cardHeight + 20);
            // What the window has grown, and no more, is shared by the two.
            QVERIFY(std::abs(hero->mapRectToScene(hero->boundingRect()).bottom() -
                             (stage.window()->height() - 16 - card->height() - 24 -
                              popover->findChild<QQuickItem *>(u"stats"_s)->height())) < 1.5);
            heroHeight = hero->height();
            cardHeight = card->height();
        }
        QCOMPARE(stage.window()->height(), 536);
        QVERIFY(heroHeight > shortHero + 50);
    }

    void digitsRollWhenTheirNumberChanges()
    {
        StageSetup setup;
        setup.links = 99;
        Stage stage(setup);
        QQuickItem *popover = stage.showPopover();
        stage.pass(1s);
        const auto texts = [popover] { return ItemTree::texts(*popover).join(u' '); };
        QVERIFY(texts().contains(u"LINKS 9 9 REMOVED"_s));
        auto *number = popover->findChild<QQuickItem *>(u"value"_s);
        const double narrow = number->implicitWidth();

        stage.state->record(shopResult());
        stage.pass(frame);
        const double opening = number->implicitWidth();
        // The places from the right: each has its old digit, if any, and its new one.
        QVERIFY2(texts().contains(u"LINKS 9 0 9 0 1 REMOVED"_s), qPrintable(texts()));
        stage.pass(1s);

        QVERIFY(texts().contains(u"LINKS 0 0 1 REMOVED"_s));
        QVERIFY(opening < narrow + 0.5 * (number->implicitWidth() - narrow));
    }

    void thePanelFadesInOnItsSpringAndItsShadeLightens()
    {
        Stage stage({});
        const auto *panel = stage.showPopover()->findChild<QQuickItem *>(u"panel"_s);
        const auto shade = [panel] { return panel->property("shade").toDouble(); };
        stage.pass(96ms);
        QVERIFY2(panel->opacity() > 0.55 && panel->opacity() < 0.85,
                 qPrintable(QString::number(panel->opacity())));
        QVERIFY2(shade() > 0.13, qPrintable(QString::number(shade())));
        const double missing = 1 - panel->opacity();
        QCOMPARE(panel->property("sideInset").toDouble(), 9 * missing);
        QCOMPARE(panel->property("topInset").toDouble(), 4 * missing);
        QCOMPARE(panel->property("bottomInset").toDouble(), 14 * missing);
        stage.pass(2s);
        QCOMPARE(panel->opacity(), 1.0);
        QCOMPARE(shade(), 0.1);
    }

    void theSealLightsUpForAsLongAsTheIconPulses()
    {
        Stage stage({});
        const auto *seal = stage.showPopover()->findChild<QQuickItem *>(u"seal"_s);
        stage.pass(1s);
        const auto light = [seal] { return seal->property("light").toDouble(); };
        QCOMPARE(light(), 0.0);
        stage.state->record(shopResult());
        stage.pass(1120ms);
        QVERIFY2(light() > 0.95, qPrintable(QString::number(light())));
        stage.pass(400ms);
        QVERIFY2(light() < 0.15, qPrintable(QString::number(light())));
    }

    void theSealLeansTowardsThePointer()
    {
        Stage stage({});
        QQuickItem *popover = stage.showPopover();
        const auto *hero = popover->findChild<QQuickItem *>(u"hero"_s);
        const auto *seal = popover->findChild<QQuickItem *>(u"seal"_s);
        const auto middle = [seal] { return seal->mapToScene({seal->width() / 2, seal->height() / 2}); };
        const auto top = [seal] { return seal->mapToScene({seal->width() / 2, 0}); };
        QTest::mouseMove(stage.window(), {2, 2});
        stage.pass(2s);
        const QPointF rest = middle();

        const QPointF place = hero->mapToScene({0.9 * hero->width(), 0.75 * hero->height()});
        QTest::mouseMove(stage.window(), place.toPoint());
        stage.pass(2s);
        const QPointF shift = middle() - rest;
        QVERIFY2(std::abs(shift.x() - 6 * 0.8) < 0.2 && std::abs(shift.y() - 6 * 0.5) < 0.2,
                 qPrintable(u"%1, %2"_s.arg(shift.x()).arg(shift.y())));
        // Turned against the clock, by 8 degrees for the whole way.
        const QPointF up = top() - middle();
        const double degrees = std::atan2(up.x(), -up.y()) * 180 / M_PI;
        QVERIFY2(std::abs(degrees + 8 * 0.8) < 0.2, qPrintable(QString::number(degrees)));
    }

    void theSwitchAnswersThePointer()
    {
        Stage stage({});
        QQuickItem *control = ItemTree::control(*stage.showPopover(), u"Clean copied links"_s);
        const auto *indicator = control->property("indicator").value<QQuickItem *>();
        QTest::mouseMove(stage.window(), {2, 300});
        stage.pass(1s);
        QCOMPARE(indicator->scale(), 1.0);
        QTest::mouseMove(stage.window(), ItemTree::middle(*control));
        stage.pass(2s);
        QVERIFY2(std::abs(indicator->scale() - 1.012) < 0.001,
                 qPrintable(QString::number(indicator->scale())));
    }

    void aSettingsButtonIsDarkerWhileItIsPressed()
    {
        Stage stage({.theme = VelmoraTheme::light});
        const QQuickItem *button =
            ItemTree::control(*stage.showSettings(AppTab::general), u"Show Menu Bar Icon"_s);
        const QPoint middle = ItemTree::middle(*button);
        const QPoint beside = button->mapToScene({5, button->height() / 2}).toPoint(); // Of its text.
        QTest::mouseMove(stage.window(), middle);
        stage.pass(100ms);
        const double hovered = stage.picture().pixelColor(beside).lightnessF();
        QTest::mousePress(stage.window(), Qt::LeftButton, {}, middle);
        stage.pass(100ms);
        const double pressed = stage.picture().pixelColor(beside).lightnessF();
        QTest::mouseRelease(stage.window(), Qt::LeftButton, {}, middle);
        QVERIFY2(pressed < hovered - 0.04, qPrintable(u"%1, %2"_s.arg(pressed).arg(hovered)));
    }

    void aSettingsSwitchMovesOnItsSpring()
    {
        Stage stage({});
        QQuickItem *control =
            ItemTree::control(*stage.showSettings(AppTab::general), u"Ask before cleaning"_s);
        const QList<QQuickItem *> parts = control->findChildren<QQuickItem *>();
        const auto knob = std::find_if(parts.begin(), parts.end(),
                                       [](const QQuickItem *part) { return part->width() == 14; });
        QVERIFY(knob != parts.end());
        stage.pass(1s);
        QCOMPARE((*knob)->x(), 2.0);
        stage.state->setAskBeforeCleaningEnabled(true);
        stage.pass(96ms);
        const double way = ((*knob)->x() - 2) / 14;
        QVERIFY2(way > 0.55 && way < 0.85, qPrintable(QString::number(way)));
        stage.pass(1s);
        QCOMPARE((*knob)->x(), 16.0);
    }

    void eightDigitsFit()
    {
        StageSetup setup;
        setup.links = 88888888;
        setup.trackers = 66666666;
        Stage stage(setup);
        QQuickItem *popover = stage.showPopover();
        stage.pass(1s);
        for (const auto *number : popover->findChildren<QQuickItem *>(u"value"_s)) {
            const auto *tile = number->parentItem()->parentItem();
            QVERIFY2(number->mapRectToItem(tile, QRectF(0, 0, number->implicitWidth(), 1)).right() <=
                         tile->width() - 8.5,
                     qPrintable(QString::number(number->implicitWidth())));
        }
    }
};

static const RegisteredGuiTest<PopoverMotionTests> registered;
#include "PopoverMotionTests.moc"
