#include <VelmoraLinux/Instance/LinuxApplicationInstance.h>

#include <QDBusConnectionInterface>
#include <QProcess>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

const QString kName = u"app.velmora.InstanceTest"_s;

} // namespace

// Who is the one instance, on a bus of its own.
class LinuxApplicationInstanceTests : public QObject {
    Q_OBJECT

private Q_SLOTS:

    void initTestCase()
    {
        daemon_.start(u"dbus-daemon"_s, {u"--session"_s, u"--nofork"_s, u"--print-address"_s});
        QVERIFY(daemon_.waitForReadyRead());
        address_ = QString::fromLatin1(daemon_.readLine().trimmed());
    }

    void cleanupTestCase()
    {
        daemon_.terminate();
        daemon_.waitForFinished();
    }

    void cleanup()
    {
        QDBusConnection::disconnectFromBus(u"old"_s);
        QDBusConnection::disconnectFromBus(u"new"_s);
    }

    void theFirstOneHasTheName()
    {
        LinuxApplicationInstance instance(bus(u"new"_s), kName, token_);
        QCOMPARE(instance.claim(), ApplicationInstance::Role::first);
        QCOMPARE(ownerSeenBy(u"new"_s), bus(u"new"_s).baseService());
    }

    void anHeirWithoutAPredecessorHasTheName()
    {
        LinuxApplicationInstance instance(bus(u"new"_s), kName, token_);
        QCOMPARE(instance.inherit(), ApplicationInstance::Role::first);
        QCOMPARE(ownerSeenBy(u"new"_s), bus(u"new"_s).baseService());
    }

    void anHeirGetsTheNameWhenItsPredecessorIsGone()
    {
        QVERIFY(bus(u"old"_s).registerService(kName));
        LinuxApplicationInstance instance(bus(u"new"_s), kName, token_);
        QCOMPARE(instance.inherit(), ApplicationInstance::Role::first);
        QCOMPARE(ownerSeenBy(u"new"_s), bus(u"old"_s).baseService());
        QDBusConnection::disconnectFromBus(u"old"_s);
        QTRY_COMPARE(ownerSeenBy(u"new"_s), bus(u"new"_s).baseService());
    }

private:
    [[nodiscard]] QDBusConnection bus(const QString &name) const
    {
        const QDBusConnection known(name);
        return known.isConnected() ? known : QDBusConnection::connectToBus(address_, name);
    }

    [[nodiscard]] QString ownerSeenBy(const QString &name) const
    {
        return bus(name).interface()->serviceOwner(kName);
    }

    QProcess daemon_;
    QString address_;
    ActivationToken token_;
};

QTEST_GUILESS_MAIN(LinuxApplicationInstanceTests)
#include "LinuxApplicationInstanceTests.moc"
