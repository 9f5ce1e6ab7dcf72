#include <VelmoraLinux/Login/PortalLoginItem.h>

#include <QDBusConnection>
#include <QDBusContext>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusPendingCallWatcher>
#include <QTest>

#include <Runner/RegisteredTest.h>
#include <TestBed/SessionBus.h>

#include <optional>

using namespace Qt::StringLiterals;

// A portal that records the request and responds when the test says so.
class FakeBackgroundPortal : public QObject, protected QDBusContext {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.portal.Background")

public:
    explicit FakeBackgroundPortal(QDBusConnection bus)
        : bus_(std::move(bus))
    {
    }

    void answer(uint response, bool autostart, const QString &request)
    {
        QDBusMessage signal =
            QDBusMessage::createSignal(request, u"org.freedesktop.portal.Request"_s, u"Response"_s);
        signal.setArguments({response, QVariantMap{{u"background"_s, true}, {u"autostart"_s, autostart}}});
        bus_.send(signal);
    }

    QList<QVariantMap> questions;
    QStringList requests;

public Q_SLOTS:

    QDBusObjectPath
    RequestBackground(const QString &,
                      const QVariantMap &options) // NOLINT(readability-identifier-naming): the bus's name
    {
        questions.append(options);
        requests.append(u"/org/freedesktop/portal/desktop/request/%1/%2"_s.arg(
            message().service().mid(1).replace(u'.', u'_'), options.value(u"handle_token"_s).toString()));
        return QDBusObjectPath(requests.last());
    }

private:
    QDBusConnection bus_;
};

class PortalLoginItemTests : public QObject {
    Q_OBJECT

private Q_SLOTS:

    void initTestCase()
    {
        daemon_.emplace();
        QVERIFY(!daemon_->address().isEmpty());
    }

    void init()
    {
        QDBusConnection service = QDBusConnection::connectToBus(daemon_->address(), u"portal"_s);
        QVERIFY(service.registerService(u"org.freedesktop.portal.Desktop"_s));
        portal_ = std::make_unique<FakeBackgroundPortal>(service);
        QVERIFY(service.registerObject(u"/org/freedesktop/portal/desktop"_s, portal_.get(),
                                       QDBusConnection::ExportAllSlots));
        item_ =
            std::make_unique<PortalLoginItem>(QDBusConnection::connectToBus(daemon_->address(), u"velmora"_s),
                                              QStringList{u"velmora"_s}, u"why"_s);
        refusals_ = 0;
        item_->setRefusalHandler([this] { ++refusals_; });
    }

    void cleanup()
    {
        item_.reset();
        portal_.reset();
        QDBusConnection::disconnectFromBus(u"velmora"_s);
        QDBusConnection::disconnectFromBus(u"portal"_s);
    }

    void theRequestNamesTheCommand()
    {
        QVERIFY(item_->registerItem());
        QVERIFY(portal_->questions.isEmpty()); // On its way: nothing was waited for.
        QTRY_COMPARE(portal_->questions.size(), 1);
        const QVariantMap question = portal_->questions.first();
        QCOMPARE(question.value(u"autostart"_s).toBool(), true);
        QCOMPARE(question.value(u"commandline"_s).toStringList(), QStringList{u"velmora"_s});
        QCOMPARE(question.value(u"reason"_s).toString(), u"why"_s);
    }

    void unregisteringRequestsNoAutostart()
    {
        QVERIFY(item_->unregisterItem());
        QTRY_COMPARE(portal_->questions.size(), 1);
        QCOMPARE(portal_->questions.first().value(u"autostart"_s).toBool(), false);
    }

    void responsesAreHandled_data()
    {
        QTest::addColumn<bool>("wanted");
        QTest::addColumn<uint>("response");
        QTest::addColumn<bool>("granted");
        QTest::addColumn<int>("refusals");
        QTest::newRow("start granted") << true << 0U << true << 0;
        QTest::newRow("start taken back") << false << 0U << false << 0;
        QTest::newRow("start not granted") << true << 0U << false << 1;
        QTest::newRow("start kept against the wish") << false << 0U << true << 1;
        QTest::newRow("the user said no") << true << 1U << false << 1;
        QTest::newRow("the portal broke off") << true << 2U << true << 1;
    }

    void responsesAreHandled()
    {
        QFETCH(bool, wanted);
        QFETCH(uint, response);
        QFETCH(bool, granted);
        QVERIFY(wanted ? item_->registerItem() : item_->unregisterItem());
        QTRY_COMPARE(portal_->requests.size(), 1);
        portal_->answer(response, granted, portal_->requests.first());
        // A later call shows that the response has arrived: the bus keeps the order of messages.
        settle();
        QTEST(refusals_, "refusals");
    }

    void aResponseToAnEarlierRequestIsIgnored()
    {
        QVERIFY(item_->registerItem());
        QVERIFY(item_->unregisterItem());
        QTRY_COMPARE(portal_->requests.size(), 2);
        portal_->answer(1, false, portal_->requests.first());
        portal_->answer(0, false, portal_->requests.last());
        settle();
        QCOMPARE(refusals_, 0);
    }

    void withoutAPortalTheRequestIsRefused()
    {
        QDBusConnection(u"portal"_s).unregisterService(u"org.freedesktop.portal.Desktop"_s);
        QVERIFY(item_->registerItem());
        QTRY_COMPARE(refusals_, 1);
    }

    void withoutABusNothingIsRegistered()
    {
        PortalLoginItem item(QDBusConnection(u"no such bus"_s), {u"velmora"_s}, {});
        QVERIFY(!item.registerItem());
        QVERIFY(!item.unregisterItem());
    }

private:
    // Waits until everything the portal has sent so far has been delivered.
    void settle()
    {
        bool seen = false;
        QDBusConnection bus(u"velmora"_s);
        auto *watcher = new QDBusPendingCallWatcher(
            bus.asyncCall(QDBusMessage::createMethodCall(u"org.freedesktop.portal.Desktop"_s, u"/"_s,
                                                         u"org.freedesktop.DBus.Peer"_s, u"Ping"_s)),
            this);
        connect(watcher, &QDBusPendingCallWatcher::finished, this, [&seen, watcher] {
            seen = true;
            watcher->deleteLater();
        });
        QTRY_VERIFY(seen);
        QCoreApplication::processEvents();
    }

    std::optional<SessionBus> daemon_;
    std::unique_ptr<FakeBackgroundPortal> portal_;
    std::unique_ptr<PortalLoginItem> item_;
    int refusals_ = 0;
};

static const RegisteredTest<PortalLoginItemTests> registered;
#include "PortalLoginItemTests.moc"
