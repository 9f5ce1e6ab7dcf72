#include "RecordedSleeps.h"
#include "TestStore.h"

#include <VelmoraLinux/Defaults/SqliteDefaultsStore.h>

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

#include <Runner/RegisteredTest.h>
#include <sqlite3.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <limits>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

using Problem = DefaultsStore::Problem;

namespace {

void overwrite(const QString &path, qint64 offset, const QByteArray &bytes)
{
    QFile file(path);
    QVERIFY(file.open(QIODevice::ReadWrite));
    file.seek(offset);
    file.write(bytes);
}

mode_t rightsOf(const QString &path)
{
    struct stat status = {};
    return stat(QFile::encodeName(path).constData(), &status) == 0 ? status.st_mode & 0777U : 0;
}

// Another process that locks the database until it is released.
class LockHolder {
public:
    enum Kind { againstWriters, againstEverybody };

    LockHolder(const QString &path, Kind kind)
    {
        const QString script = u"import sqlite3, sys\n"
                               "db = sqlite3.connect(sys.argv[1], isolation_level=None)\n"
                               "db.execute('PRAGMA locking_mode=' + sys.argv[2])\n"
                               "db.execute('BEGIN IMMEDIATE')\n"
                               "print('held', flush=True)\n"
                               "sys.stdin.read()\n"_s;
        const QString mode = kind == againstEverybody ? u"EXCLUSIVE"_s : u"NORMAL"_s;
        process_.start(u"python3"_s, {u"-c"_s, script, path, mode});
        while (!process_.canReadLine() && process_.waitForReadyRead())
            continue;
    }

    ~LockHolder() { release(); }

    Q_DISABLE_COPY_MOVE(LockHolder)

    [[nodiscard]] bool holds() { return process_.readLine() == "held\n"; }

    void release()
    {
        process_.closeWriteChannel();
        process_.waitForFinished();
    }

private:
    QProcess process_;
};

} // namespace

class SqliteDefaultsStoreTests : public QObject, private TestHome {
    Q_OBJECT

private Q_SLOTS:

    void init() { begin(); }

    void valuesComeBackWithTheirTypes()
    {
        const QString text = u"gr\u00fc\u00dfe\u0000 \U0001F517\nzwei"_s;
        const QByteArray bytes("\0\xff\x80 bytes", 9);
        {
            SqliteDefaultsStore store(folder());
            store.setBoolean(u"yes", true);
            store.setBoolean(u"no", false);
            store.setInteger(u"largest", std::numeric_limits<qint64>::max());
            store.setInteger(u"smallest", std::numeric_limits<qint64>::min());
            store.setString(u"text", text);
            store.setString(u"no text", QString());
            store.setData(u"bytes", bytes);
            store.setData(u"no bytes", QByteArray());
            QVERIFY(problemsOf(store).isEmpty());
        }
        const SqliteDefaultsStore store(folder());
        QCOMPARE(store.boolean(u"yes"), std::optional(true));
        QCOMPARE(store.boolean(u"no"), std::optional(false));
        QCOMPARE(store.integer(u"largest"), std::optional(std::numeric_limits<qint64>::max()));
        QCOMPARE(store.integer(u"smallest"), std::optional(std::numeric_limits<qint64>::min()));
        QCOMPARE(store.string(u"text"), std::optional(text));
        QCOMPARE(store.string(u"no text"), std::optional(QString()));
        QCOMPARE(store.data(u"bytes"), std::optional(bytes));
        QCOMPARE(store.data(u"no bytes"), std::optional(QByteArray()));
    }

    void aMissingKeyAndAnotherTypeGiveNothing()
    {
        SqliteDefaultsStore store(folder());
        store.setInteger(u"one", 1);

        QCOMPARE(store.integer(u"two"), std::nullopt);
        QCOMPARE(store.boolean(u"one"), std::nullopt);
        QCOMPARE(store.string(u"one"), std::nullopt);
        QCOMPARE(store.data(u"one"), std::nullopt);
    }

    void aKeyCanChangeItsTypeAndItsValue()
    {
        store(1);
        SqliteDefaultsStore(folder()).setString(u"number", u"two"_s);

        const SqliteDefaultsStore store(folder());
        QCOMPARE(store.integer(u"number"), std::nullopt);
        QCOMPARE(store.string(u"number"), std::optional(u"two"_s));
    }

    void aRemovedValueLeavesNoTraceOnDisk()
    {
        SqliteDefaultsStore store(folder());
        store.setData(u"history", QByteArray("a very private link ").repeated(2000));
        store.remove(u"history");
        store.remove(u"was never there");

        QCOMPARE(store.data(u"history"), std::nullopt);
        store.finishTidying();
        QCOMPARE(filesThatContain(folder(), "private"), QStringList());
    }

    void aReplacedTextLeavesNoTraceOnDisk()
    {
        SqliteDefaultsStore store(folder());
        store.setData(u"history", QByteArray("a very private link ").repeated(2000));
        store.setString(u"text", u"another private link"_s);
        store.setData(u"history", QByteArray("an ordinary one ").repeated(100));
        store.setString(u"text", u"short"_s);
        store.finishTidying();
        QCOMPARE(filesThatContain(folder(), "private"), QStringList());
    }

    void aReaderOnlyDelaysTheRemovalOfTraces()
    {
        SqliteDefaultsStore store(folder());
        store.setData(u"history", QByteArray("a very private link ").repeated(2000));
        sqlite3 *reader = nullptr;
        QCOMPARE(sqlite3_open(QFile::encodeName(path()).constData(), &reader), SQLITE_OK);
        QCOMPARE(sqlite3_exec(reader, "BEGIN; SELECT * FROM defaults", nullptr, nullptr, nullptr), SQLITE_OK);
        store.remove(u"history");
        store.finishTidying();
        QVERIFY(!filesThatContain(folder(), "private").isEmpty()); // The reader still needs it.
        QCOMPARE(sqlite3_close(reader), SQLITE_OK);
        store.setBoolean(u"anything", true);
        store.finishTidying();
        QCOMPARE(filesThatContain(folder(), "private"), QStringList());
    }

    void aRemovedTextDisappearsFromStoresThatWereSetAside()
    {
        QVERIFY(QDir().mkpath(folder()));
        overwrite(path(), 0, QByteArray("private text in no database").repeated(1000));
        overwrite(path() + u"-wal"_s, 0, "private text in a log");
        SqliteDefaultsStore store(folder());
        store.setData(u"history", "private");
        store.remove(u"another");
        QVERIFY(QFile::exists(folder() + u"/defaults.damaged-1.sqlite"_s));
        store.remove(u"history");
        store.finishTidying();
        QCOMPARE(filesThatContain(folder(), "private"), QStringList());
        QVERIFY(!QFile::exists(folder() + u"/defaults.damaged-1.sqlite"_s));
    }

    void aLinkInThePlaceOfOneThatWasSetAsideIsNotFollowed()
    {
        const QString link = folder() + u"/defaults.damaged-1.sqlite"_s;
        const QString precious = home() + u"/precious"_s;
        SqliteDefaultsStore store(folder());
        store.setData(u"history", "text");
        overwrite(precious, 0, "content");
        QVERIFY(QFile::link(precious, link));
        store.remove(u"history");
        QCOMPARE(contentsOf(precious), QByteArray("content"));
        QVERIFY(!QFileInfo(link).isSymLink());
    }

    void nobodyElseCanReadTheStore()
    {
        QVERIFY(QDir().mkpath(folder()));
        store(1);
        QFile::setPermissions(folder(), QFile::Permissions(0x7755));
        QFile::setPermissions(path(), QFile::Permissions(0x6644));

        SqliteDefaultsStore store(folder());
        store.setInteger(u"number", 2);

        QCOMPARE(rightsOf(folder()), mode_t(0700));
        for (const char *companion : {"", "-wal", "-shm"})
            QCOMPARE(rightsOf(path() + QLatin1StringView(companion)), mode_t(0600));
    }

    void aDamagedFileIsSetAsideUntouched_data()
    {
        QTest::addColumn<qint64>("offset");
        QTest::addColumn<QByteArray>("damage");
        QTest::newRow("no database at all") << qint64(0) << QByteArray("this is no database").repeated(500);
        QTest::newRow("head overwritten") << qint64(0) << QByteArray(100, '\xff');
        QTest::newRow("all pages but the first overwritten") << qint64(4096) << QByteArray(1 << 16, '\xff');
        QTest::newRow("somebody else's database") << qint64(68) << QByteArray("ABCD");
    }

    void aDamagedFileIsSetAsideUntouched()
    {
        QFETCH(qint64, offset);
        QFETCH(QByteArray, damage);
        {
            SqliteDefaultsStore store(folder());
            store.setInteger(u"number", 1);
            store.setData(u"history", QByteArray(30000, 'x'));
        }
        overwrite(path(), offset, damage);
        const QByteArray damaged = contentsOf(path());

        {
            SqliteDefaultsStore store(folder());
            QCOMPARE(problemsOf(store), QList{Problem::setAside});
            QCOMPARE(store.integer(u"number"), std::nullopt);
            store.setInteger(u"number", 2);
        }
        QCOMPARE(stored(), std::optional<qint64>(2));
        QCOMPARE(contentsOf(folder() + u"/defaults.damaged-1.sqlite"_s), damaged);
    }

    void theLogOfADamagedFileIsSetAsideWithIt()
    {
        QVERIFY(QDir().mkpath(folder()));
        overwrite(path(), 0, QByteArray("no database").repeated(1000));
        overwrite(path() + u"-wal"_s, 0, "no log");
        overwrite(folder() + u"/defaults.damaged-1.sqlite"_s, 0, "of an earlier accident");
        store(1);

        QCOMPARE(contentsOf(folder() + u"/defaults.damaged-1.sqlite"_s),
                 QByteArray("of an earlier accident"));
        QCOMPARE(contentsOf(folder() + u"/defaults.damaged-2.sqlite-wal"_s), QByteArray("no log"));
        QVERIFY(QFile::exists(folder() + u"/defaults.damaged-2.sqlite"_s));
        QCOMPARE(stored(), std::optional<qint64>(1));
    }

    void aReadOnlyPlaceKeepsValuesInMemoryUntilItIsWritable()
    {
        store(1);
        const QByteArray place = QFile::encodeName(folder());
        const QByteArray file = QFile::encodeName(path());
        if (geteuid() == 0) {
            QCOMPARE(chmod(QFile::encodeName(home()).constData(), 0755), 0);
            QCOMPARE(chown(place.constData(), nobody, nobody), 0);
            QCOMPARE(chown(file.constData(), nobody, nobody), 0);
        }
        QCOMPARE(chmod(file.constData(), 0400), 0);
        QCOMPARE(chmod(place.constData(), 0500), 0);
        const OrdinaryUser user;
        {
            SqliteDefaultsStore store(folder());
            QCOMPARE(problemsOf(store), QList{Problem::notWritable});
            QCOMPARE(store.integer(u"number"), std::optional<qint64>(1));
            store.setInteger(u"number", 2);
            store.setInteger(u"other", 20);
            QCOMPARE(store.integer(u"number"), std::optional<qint64>(2));
            QVERIFY(problemsOf(store).isEmpty()); // Reported once.
            int recoveries = 0;
            store.setRecoveryHandler([&recoveries] { ++recoveries; });
            store.setInteger(u"number", 2);
            QCOMPARE(recoveries, 0);

            QCOMPARE(chmod(place.constData(), 0700), 0);
            QCOMPARE(chmod(file.constData(), 0600), 0);
            store.setInteger(u"third", 30);
            QCOMPARE(recoveries, 1);
            store.setInteger(u"third", 30);
            QCOMPARE(recoveries, 1);
        }
        const SqliteDefaultsStore store(folder());
        QCOMPARE(store.integer(u"number"), std::optional<qint64>(2));
        QCOMPARE(store.integer(u"other"), std::optional<qint64>(20));
        QCOMPARE(store.integer(u"third"), std::optional<qint64>(30));
    }

    void aFolderThatCannotBeMadeIsTriedAgainAtTheNextWrite()
    {
        overwrite(folder(), 0, "a file in the folder's place");
        SqliteDefaultsStore store(folder());
        store.setInteger(u"number", 1);
        QCOMPARE(problemsOf(store), QList{Problem::notWritable});
        QCOMPARE(store.integer(u"number"), std::optional<qint64>(1));

        QVERIFY(QFile::remove(folder()));
        store.setInteger(u"other", 2);
        QCOMPARE(stored(), std::optional<qint64>(1));
    }

    void whatCouldNotBeWrittenIsTriedOnceMoreAtTheEnd()
    {
        overwrite(folder(), 0, "a file in the folder's place");
        {
            SqliteDefaultsStore store(folder());
            store.setInteger(u"number", 1);
            QVERIFY(QFile::remove(folder()));
        }
        QCOMPARE(stored(), std::optional<qint64>(1));
    }

    void aLockedStoreIsReadAndIsNotWaitedFor()
    {
        const RecordedSleeps sleeps;
        store(1);
        LockHolder other(path(), LockHolder::againstEverybody);
        QVERIFY(other.holds());
        SqliteDefaultsStore store(folder());
        QCOMPARE(store.integer(u"number"), std::optional<qint64>(1));
        store.setInteger(u"number", 2);
        QVERIFY(sleeps.total() > 0us && sleeps.total() <= 20ms); // A moment for each of a few attempts.
        QCOMPARE(store.integer(u"number"), std::optional<qint64>(2));
        QCOMPARE(problemsOf(store), QList{Problem::notWritable});

        other.release();
        store.setInteger(u"other", 3);
        QCOMPARE(stored(), std::optional<qint64>(2));
    }

    void aLockThatComesLaterLosesNothing()
    {
        SqliteDefaultsStore store(folder());
        store.setInteger(u"number", 1);
        LockHolder other(path(), LockHolder::againstWriters);
        QVERIFY(other.holds());
        store.setInteger(u"number", 2);
        QCOMPARE(problemsOf(store), QList{Problem::notWritable});

        other.release();
        store.setInteger(u"other", 3);
        QCOMPARE(stored(), std::optional<qint64>(2));
    }

    void aFullDiskLosesNothing()
    {
        SqliteDefaultsStore store(folder());
        store.setInteger(u"number", 1);
        // A limit on the size of files refuses writes in the middle, as a full disk does.
        const auto previous = std::signal(SIGXFSZ, SIG_IGN);
        rlimit before = {};
        QCOMPARE(getrlimit(RLIMIT_FSIZE, &before), 0);
        const rlimit tight = {40000, before.rlim_max};
        QCOMPARE(setrlimit(RLIMIT_FSIZE, &tight), 0);
        store.setData(u"history", QByteArray(200000, 'x'));
        store.setInteger(u"number", 2);
        QCOMPARE(setrlimit(RLIMIT_FSIZE, &before), 0);
        std::signal(SIGXFSZ, previous);
        QCOMPARE(problemsOf(store), QList{Problem::notWritable});
        QCOMPARE(store.integer(u"number"), std::optional<qint64>(2));

        store.setInteger(u"other", 3);
        const SqliteDefaultsStore reopened(folder());
        QCOMPARE(reopened.integer(u"number"), std::optional<qint64>(2));
        QCOMPARE(reopened.data(u"history"), std::optional(QByteArray(200000, 'x')));
    }

    void aValueThatCannotBeWrittenKeepsNoOtherFromIt()
    {
        SqliteDefaultsStore store(folder());
        store.setBoolean(u"telemetry", true);
        const auto previous = std::signal(SIGXFSZ, SIG_IGN);
        rlimit before = {};
        QCOMPARE(getrlimit(RLIMIT_FSIZE, &before), 0);
        const rlimit tight = {300000, before.rlim_max};
        QCOMPARE(setrlimit(RLIMIT_FSIZE, &tight), 0);
        store.setData(u"history", QByteArray(500000, 'x'));
        store.setBoolean(u"telemetry", false);
        store.setString(u"language", u"german"_s);
        const SqliteDefaultsStore reader(folder());
        QCOMPARE(setrlimit(RLIMIT_FSIZE, &before), 0);
        std::signal(SIGXFSZ, previous);
        QCOMPARE(reader.boolean(u"telemetry"), std::optional(false));
        QCOMPARE(reader.string(u"language"), std::optional(u"german"_s));
        QCOMPARE(reader.data(u"history"), std::nullopt);
        QCOMPARE(problemsOf(store), QList{Problem::notWritable});

        store.setInteger(u"number", 3);
        QCOMPARE(SqliteDefaultsStore(folder()).data(u"history"), std::optional(QByteArray(500000, 'x')));
    }

    void aStoreRemovedWhileInUseIsWrittenAgain()
    {
        SqliteDefaultsStore store(folder());
        store.setInteger(u"number", 1);
        QVERIFY(QDir(folder()).removeRecursively());

        store.setInteger(u"other", 2);
        QCOMPARE(stored(), std::optional<qint64>(1));
    }

    void theFileOfALaterVersionIsNotTouched()
    {
        store(1);
        overwrite(path(), 60, QByteArray("\0\0\0\x63", 4)); // The schema's version in the file's header.
        const QByteArray before = contentsOf(path());
        {
            SqliteDefaultsStore store(folder());
            QCOMPARE(problemsOf(store), QList{Problem::notWritable});
            QCOMPARE(store.integer(u"number"), std::optional<qint64>(1));
            store.setInteger(u"number", 2);
            QCOMPARE(store.integer(u"number"), std::optional<qint64>(2));
        }
        QCOMPARE(contentsOf(path()), before);
    }

    void aSetValueSurvivesTheKillOfTheProcess()
    {
        const pid_t child = fork();
        if (child == 0) {
            SqliteDefaultsStore store(folder());
            for (qint64 number = 1; number <= 100; ++number)
                store.setInteger(u"number", number);
            raise(SIGKILL);
        }
        int status = 0;
        QCOMPARE(waitpid(child, &status, 0), child);
        QVERIFY(WIFSIGNALED(status));
        QCOMPARE(stored(), std::optional<qint64>(100));
    }
};

static const RegisteredTest<SqliteDefaultsStoreTests> registered;
#include "SqliteDefaultsStoreTests.moc"
