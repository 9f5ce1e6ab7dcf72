#include <VelmoraLinux/Process/BundleInfoFile.h>
#include <VelmoraLinux/Process/QuitSignals.h>
#include <VelmoraLinux/Process/StartConditions.h>
#include <VelmoraLinux/Process/XdgFolders.h>
#include <VelmoraLinux/Time/EventLoopScheduler.h>
#include <VelmoraLinux/Time/SystemWallClock.h>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <Runner/RegisteredTest.h>
#include <pwd.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

class SystemTests : public QObject {
    Q_OBJECT

private Q_SLOTS:

    // A signal ends the program also when its event loop never gets to it.
    void aSignalEndsAProgramThatIsKeptBusy()
    {
        const pid_t child = fork();
        if (child == 0) {
            const QuitSignals signals;
            raise(SIGTERM);
            while (true)
                continue;
        }
        int status = -1;
        QCOMPARE(waitpid(child, &status, 0), child); // Without an end the test's time limit ends it.
        QVERIFY(WIFEXITED(status));
        QCOMPARE(WEXITSTATUS(status), 0);
    }

    // The same when the event loop gets to it, but quitting takes too long.
    void aSignalEndsAProgramThatEndsTooSlowly()
    {
        const pid_t child = fork();
        if (child == 0) {
            const QuitSignals signals;
            raise(SIGTERM);
            QCoreApplication::processEvents();
            while (true)
                continue;
        }
        int status = -1;
        QCOMPARE(waitpid(child, &status, 0), child);
        QVERIFY(WIFEXITED(status));
        QCOMPARE(WEXITSTATUS(status), 0);
    }

    void stepsRunInTheOrderOfTheirTimesAndOfAsking()
    {
        EventLoopScheduler scheduler;
        QStringList ran;
        const auto start = scheduler.now();
        std::chrono::nanoseconds lastAt{};
        scheduler.after(30ms, [&] {
            ran += u"late"_s;
            lastAt = scheduler.now();
        });
        scheduler.after(0ms, [&] { ran += u"first"_s; });
        scheduler.after(0ms, [&] { ran += u"second"_s; });
        scheduler.after(10ms, [&] { ran += u"middle"_s; });
        QVERIFY(ran.isEmpty()); // Never from within the call.

        QTRY_COMPARE(ran.size(), 4);
        QCOMPARE(ran, QStringList({u"first"_s, u"second"_s, u"middle"_s, u"late"_s}));
        QVERIFY(lastAt - start >= 30ms);
    }

    void aStepMayAskForAnother()
    {
        EventLoopScheduler scheduler;
        int rounds = 0;
        std::function<void()> again = [&] {
            if (++rounds < 5)
                scheduler.after(1ms, again);
        };
        scheduler.after(1ms, again);
        QTRY_COMPARE(rounds, 5);
    }

    void relativeBaseFoldersAreIgnored_data()
    {
        QTest::addColumn<QByteArray>("value");
        QTest::addColumn<QString>("folder");
        QTest::newRow("absolute") << QByteArray("/somewhere/data/") << u"/somewhere/data"_s;
        QTest::newRow("relative") << QByteArray("data") << QDir::homePath() + u"/.local/share"_s;
        QTest::newRow("empty") << QByteArray("") << QDir::homePath() + u"/.local/share"_s;
        QTest::newRow("not UTF-8") << QByteArray("/somewhere/\xf6") << QDir::homePath() + u"/.local/share"_s;
    }

    void relativeBaseFoldersAreIgnored()
    {
        QFETCH(QByteArray, value);
        const QByteArray before = qgetenv("XDG_DATA_HOME");
        qputenv("XDG_DATA_HOME", value);
        QTEST(XdgFolders::dataHome(), "folder");
        qputenv("XDG_DATA_HOME", before);
    }

    void withoutAUsableHomeTheUserDatabaseDecides_data()
    {
        QTest::addColumn<QByteArray>("home");
        QTest::newRow("unset") << QByteArray();
        QTest::newRow("empty") << QByteArray("");
        QTest::newRow("relative") << QByteArray("home");
        QTest::newRow("not UTF-8") << QByteArray("/home/j\xf6rg");
    }

    void withoutAUsableHomeTheUserDatabaseDecides()
    {
        QFETCH(QByteArray, home);
        const QByteArray before = qgetenv("HOME");
        const QByteArray folder = qgetenv("XDG_CONFIG_HOME");
        qunsetenv("XDG_CONFIG_HOME");
        if (home.isNull())
            qunsetenv("HOME");
        else
            qputenv("HOME", home);
        const QString config = XdgFolders::configHome();
        qputenv("HOME", before);
        qputenv("XDG_CONFIG_HOME", folder);
        QCOMPARE(config, QFile::decodeName(getpwuid(getuid())->pw_dir) + u"/.config"_s);
    }

    void coreDumpsHoldNoMemory()
    {
        StartConditions::forbidCoreDumps();
        rlimit limit{};
        QCOMPARE(getrlimit(RLIMIT_CORE, &limit), 0);
        QCOMPARE(limit.rlim_cur, rlim_t{0});
        QFile filter(u"/proc/self/coredump_filter"_s);
        QVERIFY(filter.open(QIODevice::ReadOnly));
        QCOMPARE(filter.readAll().trimmed().toInt(nullptr, 16), 0);
    }

    void theInformationDictionaryLiesBesideTheProgramAndKeepsTypes()
    {
        const QTemporaryDir prefix;
        QVERIFY(QDir(prefix.path()).mkpath(u"share/velmora"_s));
        QFile file(prefix.filePath(u"share/velmora/Info.json"_s));
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(R"({"CFBundleIdentifier": "app.velmora.Velmora", "CFBundleVersion": 7})");
        file.close();

        const BundleInfoFile info(prefix.filePath(u"bin"_s));
        QCOMPARE(info.value(u"CFBundleIdentifier"), QJsonValue(u"app.velmora.Velmora"_s));
        QCOMPARE(info.value(u"CFBundleVersion"), QJsonValue(7));
        QVERIFY(info.value(u"SUFeedURL").isUndefined());
        QCOMPARE(info.resourceFolder(), prefix.filePath(u"share/velmora"_s));
    }

    void aProgramInABuildFolderIsUnbundled()
    {
        const QTemporaryDir prefix;
        const BundleInfoFile info(prefix.filePath(u"bin"_s));
        QVERIFY(info.value(u"CFBundleIdentifier").isUndefined());
        QVERIFY(info.resourceFolder().isEmpty());
    }

    void aBrokenInformationDictionaryIsNone()
    {
        const QTemporaryDir prefix;
        QVERIFY(QDir(prefix.path()).mkpath(u"share/velmora"_s));
        QFile file(prefix.filePath(u"share/velmora/Info.json"_s));
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write("[1, 2");
        file.close();
        QVERIFY(BundleInfoFile(prefix.filePath(u"bin"_s)).resourceFolder().isEmpty());
    }

    void theWallClockUsesTheSystemTimeZone()
    {
        const QDateTime before = QDateTime::currentDateTime();
        const QDateTime now = SystemWallClock().now();
        QVERIFY(now >= before && now <= QDateTime::currentDateTime());
        QCOMPARE(now.timeSpec(), Qt::LocalTime);
    }
};

static const RegisteredTest<SystemTests> registered;
#include "SystemTests.moc"
