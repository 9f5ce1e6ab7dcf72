#include <VelmoraLinux/Notifications/DBusNotifications.h>

#include <QDBusMessage>
#include <QTest>

#include <Runner/RegisteredTest.h>
#include <TestBed/SessionBus.h>

#include <memory>
#include <optional>

using namespace Qt::StringLiterals;

namespace {

// The desktop's notifications.
class FakeService : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.Notifications")

public:
    QStringList titles;
    QStringList texts;
    QStringList actions;
    QVariantMap hints;
    QList<uint> replaced;

public Q_SLOTS:

    // NOLINTNEXTLINE(readability-identifier-naming): the bus's name
    uint Notify(const QString &program, uint replaces, const QString &icon, const QString &title,
                const QString &text, const QStringList &newActions, const QVariantMap &newHints, int time)
    {
        Q_UNUSED(program);
        Q_UNUSED(icon);
        Q_UNUSED(time);
        titles.append(title);
        texts.append(text);
        actions = newActions;
        hints = newHints;
        replaced.append(replaces);
        return 5;
    }
};

} // namespace

class DBusNotificationsTests : public QObject {
    Q_OBJECT

    std::optional<SessionBus> daemon_;
    std::optional<QDBusConnection> desktop_;
    std::unique_ptr<FakeService> service_;
    std::unique_ptr<DBusNotifications> notifications_;
    int clicks_ = 0;

    void click(uint id, const QString &action)
    {
        auto signal = QDBusMessage::createSignal(u"/org/freedesktop/Notifications"_s,
                                                 u"org.freedesktop.Notifications"_s, u"ActionInvoked"_s);
        signal << id << action;
        QVERIFY(desktop_->send(signal));
    }

private Q_SLOTS:

    void initTestCase()
    {
        daemon_.emplace();
        QVERIFY(!daemon_->address().isEmpty());
    }

    void init()
    {
        clicks_ = 0;
        desktop_ = QDBusConnection::connectToBus(daemon_->address(), u"desktop"_s);
        service_ = std::make_unique<FakeService>();
        notifications_ = std::make_unique<DBusNotifications>(
            QDBusConnection::connectToBus(daemon_->address(), u"ours"_s), u"app.example"_s);
    }

    void cleanup()
    {
        notifications_.reset();
        desktop_.reset();
        QDBusConnection::disconnectFromBus(u"ours"_s);
        QDBusConnection::disconnectFromBus(u"desktop"_s);
    }

    void aMessageIsShownAndItsClickComesBack()
    {
        QVERIFY(desktop_->registerObject(u"/org/freedesktop/Notifications"_s, service_.get(),
                                         QDBusConnection::ExportAllSlots));
        QVERIFY(desktop_->registerService(u"org.freedesktop.Notifications"_s));
        notifications_->post({u"Title"_s, u"Text."_s, [this] { ++clicks_; }});
        QTRY_COMPARE(service_->titles, QStringList{u"Title"_s});
        QCOMPARE(service_->texts, QStringList{u"Text."_s});
        QCOMPARE(service_->actions, QStringList({u"default"_s, QString()}));
        QCOMPARE(service_->hints.value(u"desktop-entry"_s).toString(), u"app.example"_s);

        notifications_->post({u"Next"_s, u"Text."_s, [this] { ++clicks_; }});
        QTRY_COMPARE(service_->titles.size(), 2);
        click(4, u"default"_s); // Another program's message.
        click(5, u"other"_s);
        click(5, u"default"_s);
        QTRY_COMPARE(clicks_, 1);
    }

    void withoutAServiceNothingHappens()
    {
        notifications_->post({u"Title"_s, u"Text."_s, [this] { ++clicks_; }});
        click(0, u"default"_s);
        QTest::qWait(50);
        QCOMPARE(clicks_, 0);
    }
};

static const RegisteredTest<DBusNotificationsTests> registered;
#include "DBusNotificationsTests.moc"
