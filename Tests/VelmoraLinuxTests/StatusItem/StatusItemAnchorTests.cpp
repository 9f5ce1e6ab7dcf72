#include <VelmoraLinux/StatusItem/StatusItemAnchor.h>

#include <QTest>

#include <Runner/RegisteredTest.h>

namespace {

constexpr QRect wholeScreen(0, 0, 1280, 800);
constexpr QRect topPanel(0, 32, 1280, 768);
constexpr QRect bottomPanel(0, 0, 1280, 768);
constexpr QRect leftPanel(32, 0, 1248, 800);
constexpr QRect rightPanel(0, 0, 1248, 800);

} // namespace

class StatusItemAnchorTests : public QObject {
    Q_OBJECT

private Q_SLOTS:

    void positionsInsideAnIconOrOffTheScreensAreIgnored_data()
    {
        QTest::addColumn<QPoint>("hint");
        QTest::addColumn<bool>("isOnScreen");
        QTest::addColumn<bool>("tells");
        QTest::newRow("zeros") << QPoint(0, 0) << true << false;
        QTest::newRow("counted from the icon's corner") << QPoint(47, 12) << true << false;
        QTest::newRow("a panel at the top") << QPoint(1200, 12) << true << true;
        QTest::newRow("a panel at the left") << QPoint(12, 700) << true << true;
        QTest::newRow("off all screens") << QPoint(5000, 12) << false << false;
    }

    void positionsInsideAnIconOrOffTheScreensAreIgnored()
    {
        QFETCH(QPoint, hint);
        QFETCH(bool, isOnScreen);
        const auto screen = isOnScreen ? std::optional(ScreenFrame{wholeScreen, topPanel}) : std::nullopt;
        QTEST(isClickPosition(hint, screen), "tells");
    }

    void aClickInAPanelMeansThePanelsWholeThickness_data()
    {
        QTest::addColumn<QRect>("workArea");
        QTest::addColumn<QPoint>("click");
        QTest::addColumn<QRect>("anchor");
        QTest::newRow("top") << topPanel << QPoint(1200, 20) << QRect(1200, 0, 1, 32);
        QTest::newRow("bottom") << bottomPanel << QPoint(1200, 790) << QRect(1200, 768, 1, 32);
        QTest::newRow("left") << leftPanel << QPoint(5, 700) << QRect(0, 700, 32, 1);
        QTest::newRow("right") << rightPanel << QPoint(1270, 700) << QRect(1248, 700, 32, 1);
        QTest::newRow("not in a panel") << topPanel << QPoint(600, 400) << QRect(600, 400, 1, 1);
        QTest::newRow("no panel") << wholeScreen << QPoint(600, 3) << QRect(600, 3, 1, 1);
    }

    void aClickInAPanelMeansThePanelsWholeThickness()
    {
        QFETCH(QRect, workArea);
        QFETCH(QPoint, click);
        QTEST(anchorAround(click, {wholeScreen, workArea}), "anchor");
    }

    void withoutAnyHintIconsAreAtThePanelsEnd_data()
    {
        QTest::addColumn<QRect>("workArea");
        QTest::addColumn<QRect>("anchor");
        QTest::newRow("top") << topPanel << QRect(1279, 0, 1, 32);
        QTest::newRow("bottom") << bottomPanel << QRect(1279, 768, 1, 32);
        QTest::newRow("left") << leftPanel << QRect(0, 799, 32, 1);
        QTest::newRow("right") << rightPanel << QRect(1248, 799, 32, 1);
        QTest::newRow("none: the top right") << wholeScreen << QRect(1279, 0, 1, 1);
        QTest::newRow("the thicker of two") << QRect(0, 24, 1280, 736) << QRect(1279, 760, 1, 40);
    }

    void withoutAnyHintIconsAreAtThePanelsEnd()
    {
        QFETCH(QRect, workArea);
        QTEST(fallbackAnchor({wholeScreen, workArea}), "anchor");
    }

    void tipsStandBesideTheIconInsideTheWorkArea_data()
    {
        QTest::addColumn<QRect>("workArea");
        QTest::addColumn<QRect>("icon");
        QTest::addColumn<QRect>("tip");
        QTest::newRow("top") << topPanel << QRect(600, 4, 24, 24) << QRect(512, 36, 200, 24);
        QTest::newRow("bottom") << bottomPanel << QRect(600, 772, 24, 24) << QRect(512, 740, 200, 24);
        QTest::newRow("left") << leftPanel << QRect(4, 700, 24, 24) << QRect(36, 700, 200, 24);
        QTest::newRow("right") << rightPanel << QRect(1252, 700, 24, 24) << QRect(1044, 700, 200, 24);
        QTest::newRow("the corner") << topPanel << QRect(1256, 4, 24, 24) << QRect(1076, 36, 200, 24);
        QTest::newRow("no panel") << wholeScreen << QRect(600, 4, 24, 24) << QRect(512, 31, 200, 24);
    }

    void tipsStandBesideTheIconInsideTheWorkArea()
    {
        QFETCH(QRect, workArea);
        QFETCH(QRect, icon);
        QTEST(tipFrame(icon, workArea, QSize(200, 24)), "tip");
    }

    void thePointerIsBelievedBeforeTheHost()
    {
        const ScreenFrame screen{QRect(0, 0, 1280, 800), QRect(0, 32, 1280, 768)};
        const QPoint inPanel(1200, 16);
        const QPoint elsewhere(400, 500);
        QVERIFY(isPointerOnIcon(screen, inPanel, screen, QPoint(600, 8))); // Counted in other units.
        QVERIFY(isPointerOnIcon(screen, inPanel, std::nullopt, QPoint(2400, 32)));
        QVERIFY(isPointerOnIcon(screen, elsewhere, screen, QPoint(9, 16))); // A panel that reserves no room.
        QVERIFY(!isPointerOnIcon(screen, elsewhere, screen, inPanel));      // By keyboard.
        QVERIFY(!isPointerOnIcon(std::nullopt, std::nullopt, screen, inPanel));
    }
};

static const RegisteredTest<StatusItemAnchorTests> registered;
#include "StatusItemAnchorTests.moc"
