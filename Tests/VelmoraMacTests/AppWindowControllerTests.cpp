#include <VelmoraMac/AppWindowController.h>

#include <QTest>

#include <Fakes/FakeAppWindows.h>
#include <Fakes/FakeServices.h>
#include <Runner/RegisteredTest.h>

using namespace Qt::StringLiterals;

class AppWindowControllerTests : public QObject {
    Q_OBJECT

private Q_SLOTS:

    void theWindowIsMadeOnFirstShowAndCentredOnce()
    {
        FakeServices fakes;
        UpdateController updates(fakes.bundle, {});
        FakeAppWindows windows;
        NotificationCenter notifications;
        AppWindowController controller(updates, windows, notifications);
        QVERIFY(windows.log.isEmpty());

        controller.show();
        QCOMPARE(windows.log, QStringList({u"made"_s, u"centred"_s, u"to the front"_s}));
        QCOMPARE(windows.options.title, u"Velmora"_s);
        QCOMPARE(windows.options.contentSize, QSize(660, 640));
        QCOMPARE(windows.options.minimumSize, QSize(640, 610));

        windows.visible = false; // The close button.
        controller.show();
        controller.show();
        QCOMPARE(windows.log.mid(3), QStringList({u"to the front"_s, u"to the front"_s}));
    }
};

static const RegisteredTest<AppWindowControllerTests> registered;
#include "AppWindowControllerTests.moc"
