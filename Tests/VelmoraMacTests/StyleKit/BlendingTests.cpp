#include <QTest>

#include <Rehearsal/Scenes.h>
#include <Runner/RegisteredTest.h>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

// Popover and toast where nothing composites: opaque from their first moment to their last.
class BlendingTests : public QObject {
    Q_OBJECT

private Q_SLOTS:

    void thePopoverIsThereAtOnceAndDoesNotFadeOut()
    {
        Stage stage({});
        stage.surroundings().setBlendsWindows(false);
        QQuickItem *popover = stage.showPopover();
        const auto *panel = popover->findChild<QQuickItem *>(u"panel"_s);
        QCOMPARE(panel->opacity(), 1.0);
        QCOMPARE(panel->property("topInset").toReal(), 0.0);
        stage.pass(1s);
        stage.popoverAnimation.requestClose();
        stage.pass(240ms);
        QCOMPARE(panel->opacity(), 1.0);
        QCOMPARE(panel->property("bottomInset").toReal(), 0.0);
    }

    void thePopoverFadesWhereItCan()
    {
        Stage stage({});
        QQuickItem *popover = stage.showPopover();
        const auto *panel = popover->findChild<QQuickItem *>(u"panel"_s);
        QVERIFY(panel->opacity() < 0.5);
    }

    void theToastIsThereAtOnce_data()
    {
        QTest::addColumn<bool>("blends");
        QTest::newRow("blended") << true;
        QTest::newRow("not blended") << false;
    }

    void theToastIsThereAtOnce()
    {
        QFETCH(bool, blends);
        Stage stage({});
        stage.surroundings().setBlendsWindows(blends);
        QQuickItem *toast = stage.showToast({}, false);
        const auto *entrance = toast->findChild<QQuickItem *>(u"entrance"_s);
        QCOMPARE(entrance->opacity() == 1.0, !blends);
        stage.pass(2s);
        QCOMPARE(entrance->opacity(), 1.0);
    }
};

static const RegisteredGuiTest<BlendingTests> registered;
#include "BlendingTests.moc"
