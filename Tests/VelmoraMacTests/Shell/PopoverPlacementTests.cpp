#include <VelmoraMac/Shell/PopoverPlacement.h>

#include <QTest>

#include <Runner/RegisteredTest.h>

class PopoverPlacementTests : public QObject {
    Q_OBJECT

private Q_SLOTS:

    void thePopoverStandsBesideItsIconInsideTheWorkArea_data()
    {
        QTest::addColumn<QRect>("anchor");
        QTest::addColumn<QRect>("workArea");
        QTest::addColumn<QRect>("frame");
        const QRect belowTopPanel(0, 30, 1280, 770);
        QTest::newRow("below, centred") << QRect(600, 0, 30, 30) << belowTopPanel << QRect(462, 38, 306, 386);
        QTest::newRow("held at the left") << QRect(4, 0, 30, 30) << belowTopPanel << QRect(8, 38, 306, 386);
        QTest::newRow("held at the right")
            << QRect(1246, 0, 30, 30) << belowTopPanel << QRect(966, 38, 306, 386);
        QTest::newRow("an icon floating below the edge")
            << QRect(600, 40, 30, 30) << belowTopPanel << QRect(462, 78, 306, 386);
        QTest::newRow("above a bottom panel")
            << QRect(600, 770, 30, 30) << QRect(0, 0, 1280, 770) << QRect(462, 376, 306, 386);
        QTest::newRow("right of a left panel")
            << QRect(0, 400, 40, 40) << QRect(40, 0, 1240, 800) << QRect(48, 227, 306, 386);
        QTest::newRow("left of a right panel, held at the bottom")
            << QRect(1240, 780, 40, 20) << QRect(0, 0, 1240, 800) << QRect(926, 406, 306, 386);
        QTest::newRow("too wide sticks to the right")
            << QRect(100, 0, 30, 30) << QRect(0, 30, 200, 770) << QRect(200 - 8 - 306, 38, 306, 386);
        QTest::newRow("too tall keeps its top")
            << QRect(600, 0, 30, 30) << QRect(0, 30, 1280, 300) << QRect(462, 38, 306, 386);
        QTest::newRow("a bottom icon without a reserved panel opens above")
            << QRect(600, 776, 24, 24) << QRect(0, 0, 1280, 800) << QRect(459, 382, 306, 386);
    }

    void thePopoverStandsBesideItsIconInsideTheWorkArea()
    {
        QFETCH(QRect, anchor);
        QFETCH(QRect, workArea);
        QTEST(popoverFrame(anchor, workArea, QSize(306, 386)), "frame");
    }

    void aMenuBeginsAtTheLeftEdgeOfItsIcon_data()
    {
        QTest::addColumn<QRect>("anchor");
        QTest::addColumn<QRect>("workArea");
        QTest::addColumn<QRect>("frame");
        const QRect belowTopPanel(0, 30, 1280, 770);
        QTest::newRow("below") << QRect(600, 0, 30, 30) << belowTopPanel << QRect(600, 34, 180, 200);
        QTest::newRow("held at the right")
            << QRect(1246, 0, 30, 30) << belowTopPanel << QRect(1100, 34, 180, 200);
        QTest::newRow("above a bottom panel")
            << QRect(600, 770, 30, 30) << QRect(0, 0, 1280, 770) << QRect(600, 566, 180, 200);
        QTest::newRow("right of a left panel")
            << QRect(0, 400, 40, 40) << QRect(40, 0, 1240, 800) << QRect(44, 400, 180, 200);
        QTest::newRow("left of a right panel, held at the bottom")
            << QRect(1240, 780, 40, 20) << QRect(0, 0, 1240, 800) << QRect(1056, 600, 180, 200);
    }

    void aMenuBeginsAtTheLeftEdgeOfItsIcon()
    {
        QFETCH(QRect, anchor);
        QFETCH(QRect, workArea);
        QTEST(menuFrame(anchor, workArea, QSize(180, 200)), "frame");
    }
};

static const RegisteredTest<PopoverPlacementTests> registered;
#include "PopoverPlacementTests.moc"
