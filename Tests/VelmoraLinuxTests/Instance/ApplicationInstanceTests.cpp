#include <VelmoraLinux/Instance/LinuxApplicationInstance.h>
#include <VelmoraLinux/Instance/LocalInstance.h>

#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusPendingCall>
#include <QLocalServer>
#include <QLocalSocket>
#include <QScopeGuard>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <QThread>

#include <Runner/RegisteredTest.h>
#include <TestBed/SessionBus.h>
#include <sys/file.h>

#include <algorithm>
#include <memory>
#include <optional>
#include <vector>

using namespace Qt::StringLiterals;

using Action = ApplicationInstance::Action;
using Role = ApplicationInstance::Role;

class ApplicationInstanceTests : public QObject {
    Q_OBJECT

    std::optional<SessionBus> daemon_;
    QTemporaryDir runtimeFolder_;
    ActivationToken token_;
    std::unique_ptr<LinuxApplicationInstance> first_;
    int reopened_ = 0;
    QList<Action> actions_;

    QDBusConnection connectAs(const QString &name) const
    {
        return QDBusConnection::connectToBus(daemon_->address(), name);
    }

    // The owner of the name on the bus.
    QString owner() const
    {
        return connectAs(u"caller"_s).interface()->serviceOwner(u"app.example.Test-program"_s);
    }

    void makeFirst(const QDBusConnection &bus)
    {
        first_ = std::make_unique<LinuxApplicationInstance>(bus, u"app.example.Test-program"_s, token_);
        QCOMPARE(first_->claim(), Role::first);
        first_->setReopenHandler([this] { ++reopened_; });
        first_->setActionHandler([this](Action action) { actions_.append(action); });
    }

    [[nodiscard]] std::unique_ptr<QLocalSocket> connectToFirst() const
    {
        auto caller = std::make_unique<QLocalSocket>();
        caller->connectToServer(runtimeFolder_.filePath(u"app.example.Test-program.socket"_s));
        (void)caller->waitForConnected();
        return caller;
    }

    // As another process would: our event loop goes on in the meantime.
    static Role claimElsewhere(const std::function<Role()> &claim)
    {
        Role role = Role::first;
        const std::unique_ptr<QThread> thread(QThread::create([&] { role = claim(); }));
        thread->start();
        (void)QTest::qWaitFor([&] { return thread->isFinished(); }, 30000);
        return role;
    }

    QDBusMessage call(const QString &method, const QVariantList &arguments)
    {
        auto call =
            QDBusMessage::createMethodCall(u"app.example.Test-program"_s, u"/app/example/Test_program"_s,
                                           u"org.freedesktop.Application"_s, method);
        call.setArguments(arguments);
        const QDBusPendingCall pending = connectAs(u"caller"_s).asyncCall(call);
        return QTest::qWaitFor([&] { return pending.isFinished(); }) ? pending.reply() : QDBusMessage();
    }

private Q_SLOTS:

    void initTestCase()
    {
        daemon_.emplace();
        QVERIFY(!daemon_->address().isEmpty());
        QVERIFY(runtimeFolder_.isValid());
        qputenv("XDG_RUNTIME_DIR", runtimeFolder_.path().toLocal8Bit());
    }

    void init()
    {
        reopened_ = 0;
        actions_.clear();
        for (const char *variable : {"XDG_ACTIVATION_TOKEN", "DESKTOP_STARTUP_ID", "DBUS_STARTER_ADDRESS"})
            qunsetenv(variable);
    }

    void cleanup()
    {
        first_.reset();
        (void)token_.take();
        for (const QString &name : {u"first"_s, u"second"_s, u"caller"_s})
            QDBusConnection::disconnectFromBus(name);
    }

    void aSecondStartReachesTheFirstOverTheBus_data()
    {
        QTest::addColumn<QByteArray>("variable");
        QTest::addColumn<QByteArray>("token");
        QTest::newRow("without a token") << QByteArray() << QByteArray();
        QTest::newRow("activation token") << QByteArray("XDG_ACTIVATION_TOKEN") << QByteArray("token-7");
        QTest::newRow("start-up id") << QByteArray("DESKTOP_STARTUP_ID") << QByteArray("id_TIME12");
    }

    void aSecondStartReachesTheFirstOverTheBus()
    {
        QFETCH(QByteArray, variable);
        QFETCH(QByteArray, token);
        makeFirst(connectAs(u"first"_s));
        if (!variable.isEmpty())
            qputenv(variable.constData(), token);
        const Role role = claimElsewhere([this] {
            ActivationToken unused;
            LinuxApplicationInstance second(connectAs(u"second"_s), u"app.example.Test-program"_s, unused);
            return second.claim();
        });
        QCOMPARE(role, Role::second);
        QTRY_COMPARE(reopened_, 1);
        QCOMPARE(token_.take(), token);
    }

    void everyWayInIsARestart_data()
    {
        QTest::addColumn<QString>("method");
        QTest::addColumn<QVariantList>("arguments");
        const QVariantMap data{{u"activation-token"_s, u"token-9"_s}};
        QTest::newRow("activate") << u"Activate"_s << QVariantList{data};
        QTest::newRow("open") << u"Open"_s << QVariantList{QStringList(u"file:///x"_s), data};
        QTest::newRow("unknown action")
            << u"ActivateAction"_s << QVariantList{u"dance"_s, QVariantList(), data};
    }

    void everyWayInIsARestart()
    {
        QFETCH(QString, method);
        QFETCH(QVariantList, arguments);
        makeFirst(connectAs(u"first"_s));
        QCOMPARE(call(method, arguments).type(), QDBusMessage::ReplyMessage);
        QTRY_COMPARE(reopened_, 1);
        QCOMPARE(token_.take(), QByteArray("token-9"));
    }

    void whenTheBusStartedItTheFirstCallIsThatStart()
    {
        qputenv("DBUS_STARTER_ADDRESS", daemon_->address().toLocal8Bit());
        makeFirst(connectAs(u"first"_s));
        call(u"Activate"_s, {QVariantMap()});
        QCOMPARE(reopened_, 0);
        call(u"Activate"_s, {QVariantMap()});
        QTRY_COMPARE(reopened_, 1);
    }

    void anActionOfTheDesktopEntryReachesTheFirst_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<Action>("action");
        QTest::newRow("settings") << u"settings"_s << Action::settings;
        QTest::newRow("popover") << u"popover"_s << Action::popover;
        QTest::newRow("clean") << u"clean"_s << Action::cleanLink;
        QTest::newRow("pause") << u"pause"_s << Action::pauseOrResume;
        QTest::newRow("quit") << u"quit"_s << Action::quit;
    }

    void anActionOfTheDesktopEntryReachesTheFirst()
    {
        QFETCH(QString, name);
        QFETCH(Action, action);
        makeFirst(connectAs(u"first"_s));
        call(u"ActivateAction"_s, {name, QVariantList(), QVariantMap{{u"activation-token"_s, u"token-4"_s}}});
        QTRY_COMPARE(actions_, QList{action});
        QCOMPARE(token_.take(), QByteArray("token-4"));
        QCOMPARE(reopened_, 0);
    }

    void theBusStartsItForAnActionToo()
    {
        qputenv("DBUS_STARTER_ADDRESS", daemon_->address().toLocal8Bit());
        makeFirst(connectAs(u"first"_s));
        call(u"ActivateAction"_s, {u"settings"_s, QVariantList(), QVariantMap()});
        QTRY_COMPARE(actions_, QList{Action::settings});
        call(u"Activate"_s, {QVariantMap()});
        QTRY_COMPARE(reopened_, 1);
    }

    void aSecondStartAsksForItsAction_data()
    {
        QTest::addColumn<bool>("hasBus");
        QTest::newRow("over the bus") << true;
        QTest::newRow("over the socket") << false;
    }

    void aSecondStartAsksForItsAction()
    {
        QFETCH(bool, hasBus);
        const auto bus = [this, hasBus](const QString &name) {
            return hasBus ? connectAs(name) : QDBusConnection(u"none"_s);
        };
        makeFirst(bus(u"first"_s));
        qputenv("XDG_ACTIVATION_TOKEN", "token-5");
        const Role role = claimElsewhere([&bus] {
            ActivationToken unused;
            LinuxApplicationInstance second(bus(u"second"_s), u"app.example.Test-program"_s, unused);
            second.setRequest(Action::pauseOrResume);
            return second.claim();
        });
        QCOMPARE(role, Role::second);
        QTRY_COMPARE(actions_, QList{Action::pauseOrResume});
        QCOMPARE(token_.take(), QByteArray("token-5"));
        QCOMPARE(reopened_, 0);
    }

    void aFirstThatDoesNotAnswerIsNoSecondStart()
    {
        auto deaf = connectAs(u"first"_s);
        QVERIFY(deaf.registerService(u"app.example.Test-program"_s)); // The name without the object.
        ActivationToken unused;
        LinuxApplicationInstance second(connectAs(u"second"_s), u"app.example.Test-program"_s, unused);
        QCOMPARE(second.claim(), Role::unanswered);
    }

    void theNextStartIsTheFirstAgain()
    {
        makeFirst(connectAs(u"first"_s));
        first_.reset();
        QDBusConnection::disconnectFromBus(u"first"_s);
        makeFirst(connectAs(u"second"_s));
    }

    void aSuccessorWithoutAPredecessorIsTheFirst()
    {
        LinuxApplicationInstance heir(connectAs(u"first"_s), u"app.example.Test-program"_s, token_);
        QCOMPARE(heir.claimWhenReleased(), Role::first);
        QCOMPARE(owner(), connectAs(u"first"_s).baseService());
    }

    void aSuccessorGetsTheNameWhenItsPredecessorHasEnded()
    {
        makeFirst(connectAs(u"first"_s));
        LinuxApplicationInstance heir(connectAs(u"second"_s), u"app.example.Test-program"_s, token_);
        QCOMPARE(heir.claimWhenReleased(), Role::first);
        QCOMPARE(owner(), connectAs(u"first"_s).baseService());
        first_.reset();
        QDBusConnection::disconnectFromBus(u"first"_s);
        QTRY_COMPARE(owner(), connectAs(u"second"_s).baseService());
    }

    void withoutABusASecondStartReachesTheFirstOverASocket()
    {
        makeFirst(QDBusConnection(u"no such connection"_s));
        qputenv("XDG_ACTIVATION_TOKEN", "token-3");
        const Role role = claimElsewhere([] {
            ActivationToken unused;
            LinuxApplicationInstance second(QDBusConnection(u"none"_s), u"app.example.Test-program"_s,
                                            unused);
            return second.claim();
        });
        QCOMPARE(role, Role::second);
        QTRY_COMPARE(reopened_, 1);
        QCOMPARE(token_.take(), QByteArray("token-3"));
    }

    void theSocketIsTheUsersAlone()
    {
        makeFirst(QDBusConnection(u"no such connection"_s));
        const QFile::Permissions others =
            QFile::ReadGroup | QFile::WriteGroup | QFile::ReadOther | QFile::WriteOther;
        for (const QString &name :
             {u"app.example.Test-program.socket"_s, u"app.example.Test-program.lock"_s}) {
            const QString path = runtimeFolder_.filePath(name);
            QVERIFY2(QFile::exists(path), qPrintable(path));
            QCOMPARE(QFile::permissions(path) & others, QFile::Permissions());
        }
    }

    void ofCallersThatStayOnlySomeAreHeard()
    {
        makeFirst(QDBusConnection(u"no such connection"_s));
        std::vector<std::unique_ptr<QLocalSocket>> callers(30);
        std::generate(callers.begin(), callers.end(), [this] { return connectToFirst(); });
        const auto staying = [&callers] {
            return std::count_if(callers.begin(), callers.end(), [](const auto &caller) {
                return caller->state() == QLocalSocket::ConnectedState;
            });
        };
        QTRY_COMPARE(staying(), 16);
        callers.clear();
        QTRY_COMPARE(reopened_, 16);
    }

    void whoStaysAndSaysNothingKeepsNobodyOut()
    {
        makeFirst(QDBusConnection(u"no such connection"_s));
        std::vector<std::unique_ptr<QLocalSocket>> silent(20);
        std::generate(silent.begin(), silent.end(), [this] { return connectToFirst(); });
        const Role role = claimElsewhere([] {
            LocalInstance second(u"app.example.Test-program"_s);
            return second.claim(Action::popover, {});
        });
        QCOMPARE(role, Role::second);
        QTRY_COMPARE(actions_, QList{Action::popover});
    }

    void whoSaysTooMuchIsTurnedAwayAndLeavesRoomForOthers_data()
    {
        QTest::addColumn<int>("length");
        QTest::newRow("and leaves") << 5000;
        QTest::newRow("and goes on") << (4 << 20);
    }

    void whoSaysTooMuchIsTurnedAwayAndLeavesRoomForOthers()
    {
        QFETCH(int, length);
        makeFirst(QDBusConnection(u"no such connection"_s));
        for (int caller = 0; caller < 20; ++caller) {
            const auto talker = connectToFirst();
            talker->write("settings\n" + QByteArray(length, 'x'));
            talker->disconnectFromServer(); // Once everything is written.
            QTRY_COMPARE(talker->state(), QLocalSocket::UnconnectedState);
        }
        const Role role = claimElsewhere([] {
            LocalInstance second(u"app.example.Test-program"_s);
            return second.claim(Action::popover, QByteArray(4000, 'x'));
        });
        QCOMPARE(role, Role::second);
        QTRY_COMPARE(actions_, QList{Action::popover});
        QCOMPARE(token_.take(), QByteArray(4000, 'x'));
        QCOMPARE(reopened_, 0);
    }

    void aFirstThatCannotBeCalledYetIsWaitedFor_data()
    {
        QTest::addColumn<bool>("goesOn");
        QTest::addColumn<Role>("role");
        QTest::newRow("and called when it can be") << true << Role::second;
        QTest::newRow("and followed when it ends") << false << Role::first;
    }

    // Two that are started at once: the first has its lock, and its socket a moment later.
    void aFirstThatCannotBeCalledYetIsWaitedFor()
    {
        QFETCH(bool, goesOn);
        QFETCH(Role, role);
        QFile lock(runtimeFolder_.filePath(u"app.example.Test-program.lock"_s));
        QVERIFY(lock.open(QIODevice::ReadWrite));
        QCOMPARE(::flock(lock.handle(), LOCK_EX | LOCK_NB), 0);
        Role claimed = Role::unanswered;
        const std::unique_ptr<QThread> thread(QThread::create([&claimed] {
            LocalInstance second(u"app.example.Test-program"_s);
            claimed = second.claim({}, "token-6");
        }));
        const auto waiter = qScopeGuard([&thread] { thread->wait(); });
        thread->start();
        QVERIFY2(!QTest::qWaitFor([&] { return thread->isFinished(); }, 100), "it did not wait");
        if (!goesOn)
            lock.close();
        QLocalServer socket;
        if (goesOn)
            QVERIFY(socket.listen(runtimeFolder_.filePath(u"app.example.Test-program.socket"_s)));
        QVERIFY(QTest::qWaitFor([&] { return thread->isFinished(); }));
        QCOMPARE(claimed, role);
        if (goesOn) {
            QLocalSocket *caller = socket.nextPendingConnection();
            QTRY_COMPARE(caller->peek(100), QByteArray("\ntoken-6"));
        }
    }

    void whatACrashLeftBehindIsNoInstance()
    {
        QFile stale(runtimeFolder_.filePath(u"app.example.Test-program.socket"_s));
        QVERIFY(stale.open(QIODevice::WriteOnly));
        stale.close();
        makeFirst(QDBusConnection(u"no such connection"_s));
        const Role role = claimElsewhere([] {
            LocalInstance second(u"app.example.Test-program"_s);
            return second.claim({}, {});
        });
        QCOMPARE(role, Role::second);
        QTRY_COMPARE(reopened_, 1);
    }
};

static const RegisteredTest<ApplicationInstanceTests> registered;
#include "ApplicationInstanceTests.moc"
