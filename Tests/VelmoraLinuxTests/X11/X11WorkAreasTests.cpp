#include <VelmoraLinux/X11/X11WorkAreas.h>

#include <QTest>

#include <Runner/RegisteredTest.h>

using Struts = std::vector<std::vector<quint32>>;
using Areas = std::vector<QRect>;

class X11WorkAreasTests : public QObject {
    Q_OBJECT

private Q_SLOTS:

    void eachMonitorHasAnAreaOfItsOwn_data()
    {
        QTest::addColumn<QRect>("monitor");
        QTest::addColumn<Areas>("areas");
        QTest::addColumn<Struts>("struts");
        QTest::addColumn<QRect>("area");
        const QRect left(0, 0, 1280, 800);
        const QRect right(1280, 0, 1920, 1080);
        const Struts topOfLeft{{0, 0, 32, 0, 0, 0, 0, 0, 0, 1279, 0, 0}};
        // The desktop is 1080 pixels high, so the left monitor's lower edge is 280 above the desktop's.
        const Struts bottomOfLeft{{0, 0, 0, 320, 0, 0, 0, 0, 0, 0, 0, 1279}};
        const Struts leftOfRight{{1340, 0, 0, 0, 0, 1079, 0, 0, 0, 0, 0, 0}};
        const Struts rightOfRight{{0, 40, 0, 0, 0, 0, 0, 1079, 0, 0, 0, 0}};
        QTest::newRow("no panel") << left << Areas() << Struts() << left;
        QTest::newRow("a panel at the top") << left << Areas() << topOfLeft << QRect(0, 32, 1280, 768);
        QTest::newRow("a panel of the other one") << right << Areas() << topOfLeft << right;
        QTest::newRow("a panel at the bottom") << left << Areas() << bottomOfLeft << QRect(0, 0, 1280, 760);
        QTest::newRow("between the monitors")
            << right << Areas() << leftOfRight << QRect(1340, 0, 1860, 1080);
        QTest::newRow("between the monitors, of the other one") << left << Areas() << leftOfRight << left;
        QTest::newRow("at the right") << right << Areas() << rightOfRight << QRect(1280, 0, 1880, 1080);
        QTest::newRow("at the right, of the other one") << left << Areas() << rightOfRight << left;
        QTest::newRow("told by the window manager")
            << right << Areas{QRect(0, 40, 1280, 760), QRect(1280, 50, 1920, 1030)} << topOfLeft
            << QRect(1280, 50, 1920, 1030);
        QTest::newRow("told for others only")
            << left << Areas{QRect(1280, 50, 1920, 1030)} << topOfLeft << QRect(0, 32, 1280, 768);
        QTest::newRow("a property too short") << left << Areas() << Struts{{0, 0, 32, 0}} << left;
        QTest::newRow("nothing left")
            << left << Areas()
            << Struts{{0, 1280, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}, {0, 0, 799, 320, 0, 0, 0, 0, 0, 1279, 0, 1279}}
            << left;
    }

    void eachMonitorHasAnAreaOfItsOwn()
    {
        QFETCH(QRect, monitor);
        QFETCH(Areas, areas);
        QFETCH(Struts, struts);
        QTEST(workAreaOfMonitor(monitor, QSize(3200, 1080), areas, struts), "area");
    }

    void theFreePartOfTheDesktop_data()
    {
        QTest::addColumn<std::vector<quint32>>("area");
        QTest::addColumn<QSize>("whole");
        QTest::addColumn<QRectF>("part");
        const QRectF everything(0, 0, 1, 1);
        using Words = std::vector<quint32>;
        QTest::newRow("a panel below")
            << Words{0, 0, 2560, 750} << QSize(2560, 1000) << QRectF(0, 0, 1, 0.75);
        QTest::newRow("left and above")
            << Words{256, 250, 2304, 750} << QSize(2560, 1000) << QRectF(0.1, 0.25, 0.9, 0.75);
        QTest::newRow("not told") << Words{} << QSize(2560, 1000) << everything;
        QTest::newRow("cut short") << Words{0, 0, 2560} << QSize(2560, 1000) << everything;
        QTest::newRow("empty") << Words{0, 0, 0, 0} << QSize(2560, 1000) << everything;
        QTest::newRow("of a larger desktop") << Words{0, 0, 5000, 5000} << QSize(2560, 1000) << everything;
        QTest::newRow("without a server") << Words{0, 0, 2560, 750} << QSize() << everything;
    }

    void theFreePartOfTheDesktop()
    {
        QFETCH(std::vector<quint32>, area);
        QFETCH(QSize, whole);
        QTEST(partOfDesktop(area, whole), "part");
    }
};

static const RegisteredTest<X11WorkAreasTests> registered;
#include "X11WorkAreasTests.moc"
