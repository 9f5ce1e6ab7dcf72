#include <VelmoraLinux/Bus/CallBudget.h>

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusError>
#include <QDBusMessage>
#include <QDBusPendingCall>
#include <QSemaphore>
#include <QTest>
#include <QThread>

#include <Runner/RegisteredTest.h>
#include <TestBed/SessionBus.h>

#include <algorithm>
#include <optional>
#include <vector>

using namespace Qt::StringLiterals;

namespace {

class Service : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.example.Service")

public:
    Q_SCRIPTABLE int Count() { return ++count; }

    int count = 0;
};

// Tells when a call has come, on a thread that has nothing else to do.
class Milestone : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.example.Service")

public:
    Q_SCRIPTABLE void Count() { reached.release(); }

    QSemaphore reached;
};

using Calls = std::vector<QDBusPendingCall>;

bool areAnswered(const Calls &calls)
{
    return std::all_of(calls.begin(), calls.end(), [](const auto &call) { return call.isFinished(); });
}

int refusals(const Calls &calls)
{
    return static_cast<int>(std::count_if(calls.begin(), calls.end(), [](const QDBusPendingCall &call) {
        return call.error().type() == QDBusError::UnknownObject;
    }));
}

} // namespace

class CallBudgetTests : public QObject {
    Q_OBJECT

    static constexpr int most = CallBudget::mostAtOnce;

    std::optional<SessionBus> daemon_;
    std::optional<QDBusConnection> bus_;
    std::optional<QDBusConnection> caller_;
    std::optional<Service> service_;
    std::optional<Service> neighbour_;
    std::optional<CallBudget> budget_;

    QDBusPendingCall call(const QString &path) const
    {
        return caller_->asyncCall(
            QDBusMessage::createMethodCall(bus_->baseService(), path, u"org.example.Service"_s, u"Count"_s));
    }

    // Returns when all of them have come, without a turn of our event loop.
    Calls makeCalls(const QString &path, int number)
    {
        QThread thread;
        Milestone milestone;
        milestone.moveToThread(&thread);
        thread.start();
        bus_->registerObject(u"/milestone"_s, &milestone, QDBusConnection::ExportScriptableInvokables);
        Calls calls;
        for (int i = 0; i < number; ++i)
            calls.push_back(call(path));
        const QDBusPendingCall last = call(u"/milestone"_s);
        milestone.reached.acquire();
        bus_->unregisterObject(u"/milestone"_s);
        thread.quit();
        thread.wait();
        return calls;
    }

private Q_SLOTS:

    void init()
    {
        daemon_.emplace();
        bus_.emplace(QDBusConnection::connectToBus(daemon_->address(), u"service"_s));
        caller_.emplace(QDBusConnection::connectToBus(daemon_->address(), u"caller"_s));
        QVERIFY(bus_->isConnected() && caller_->isConnected());
        service_.emplace();
        neighbour_.emplace();
        bus_->registerObject(u"/service"_s, &*service_, QDBusConnection::ExportScriptableInvokables);
        bus_->registerObject(u"/neighbour"_s, &*neighbour_, QDBusConnection::ExportScriptableInvokables);
        budget_.emplace(std::initializer_list<QObject *>{&*service_, &*neighbour_});
    }

    void cleanup()
    {
        budget_.reset();
        service_.reset();
        neighbour_.reset();
        for (const QString &name : {u"service"_s, u"caller"_s})
            QDBusConnection::disconnectFromBus(name);
    }

    void whatThereIsRoomForIsAnsweredInItsOrder()
    {
        const Calls calls = makeCalls(u"/service"_s, most);
        QTRY_VERIFY(areAnswered(calls));
        for (std::size_t i = 0; i < calls.size(); ++i)
            QCOMPARE(calls.at(i).reply().arguments(), QVariantList{int(i) + 1});
    }

    void whatIsBeyondThatIsRefused()
    {
        const Calls calls = makeCalls(u"/service"_s, 5 * most);
        QCoreApplication::sendPostedEvents();
        QCOMPARE(service_->count, most);
        QTRY_VERIFY(areAnswered(calls));
        QCOMPARE(refusals(calls), 4 * most);
        QVERIFY(!calls.at(most - 1).isError());
        QVERIFY(calls.at(most).isError());
    }

    void laterThereIsRoomAgain()
    {
        const Calls calls = makeCalls(u"/service"_s, most + 1);
        QTRY_VERIFY(areAnswered(calls));
        QCOMPARE(refusals(calls), 1);
        const auto isServed = [this] {
            const Calls next = makeCalls(u"/service"_s, 1);
            return QTest::qWaitFor([&next] { return areAnswered(next); }) && refusals(next) == 0;
        };
        QTRY_VERIFY(isServed());
    }

    void servicesShareTheRoom()
    {
        const Calls calls = makeCalls(u"/service"_s, most - 1);
        const Calls others = makeCalls(u"/neighbour"_s, 2);
        QTRY_VERIFY(areAnswered(calls) && areAnswered(others));
        QCOMPARE(refusals(calls), 0);
        QCOMPARE(refusals(others), 1);
    }
};

static const RegisteredTest<CallBudgetTests> registered;
#include "CallBudgetTests.moc"
