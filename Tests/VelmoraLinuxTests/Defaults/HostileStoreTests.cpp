#include "TestStore.h"

#include <VelmoraLinux/Defaults/SqliteDefaultsStore.h>

#include <QDir>
#include <QFile>
#include <QScopeGuard>
#include <QTemporaryDir>
#include <QTest>

#include <Runner/RegisteredTest.h>
#include <sqlite3.h>
#include <sys/stat.h>
#include <unistd.h>

#include <functional>

using namespace Qt::StringLiterals;

using Problem = DefaultsStore::Problem;
using Plant = std::function<bool(const QByteArray &path)>; // Makes something that is no file.

// The store starts whatever is in its folder and in its database.
class HostileStoreTests : public QObject, private TestHome {
    Q_OBJECT

    // Changes the database as another program could.
    void run(const QByteArray &sql) const
    {
        sqlite3 *database = nullptr;
        QCOMPARE(sqlite3_open(QFile::encodeName(path()).constData(), &database), SQLITE_OK);
        QCOMPARE(sqlite3_exec(database, sql.constData(), nullptr, nullptr, nullptr), SQLITE_OK);
        QCOMPARE(sqlite3_close(database), SQLITE_OK);
    }

private Q_SLOTS:

    void init() { begin(); }

    void whatIsNoFileIsSetAside_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<Plant>("plant");
        const Plant fifo = [](const QByteArray &path) { return mkfifo(path.constData(), 0600) == 0; };
        const Plant folder = [](const QByteArray &path) { return mkdir(path.constData(), 0700) == 0; };
        const Plant device = [](const QByteArray &path) {
            return symlink("/dev/zero", path.constData()) == 0;
        };
        const Plant loop = [](const QByteArray &path) {
            return symlink(path.constData(), path.constData()) == 0;
        };
        const Plant socket = [](const QByteArray &path) {
            return mknod(path.constData(), S_IFSOCK | 0600, 0) == 0;
        };
        for (const char *suffix : {"", "-wal"}) {
            const QString name = u"defaults.sqlite"_s + QLatin1StringView(suffix);
            QTest::addRow("a FIFO %s", suffix) << name << fifo;
            QTest::addRow("a folder %s", suffix) << name << folder;
            QTest::addRow("a device %s", suffix) << name << device;
            QTest::addRow("a link to itself %s", suffix) << name << loop;
            QTest::addRow("a socket %s", suffix) << name << socket;
        }
    }

    // Waiting for the FIFO or reading the device to its end would last until the test's time limit.
    void whatIsNoFileIsSetAside()
    {
        QFETCH(QString, name);
        QFETCH(Plant, plant);
        QVERIFY(QDir().mkpath(folder()));
        QVERIFY(plant(QFile::encodeName(folder() + u'/' + name)));
        {
            SqliteDefaultsStore store(folder());
            QCOMPARE(problemsOf(store), QList{Problem::setAside});
            store.setInteger(u"number", 7);
        }
        QCOMPARE(stored(), std::optional<qint64>(7));
    }

    void aFifoInAReadOnlyFolderIsNotWaitedFor()
    {
        QVERIFY(QDir().mkpath(folder()));
        QCOMPARE(mkfifo(QFile::encodeName(path()).constData(), 0600), 0);
        QCOMPARE(chmod(QFile::encodeName(folder()).constData(), 0500), 0);
        if (geteuid() == 0) {
            QCOMPARE(chmod(QFile::encodeName(home()).constData(), 0755), 0);
            QCOMPARE(chown(QFile::encodeName(folder()).constData(), nobody, nobody), 0);
        }
        const OrdinaryUser user;
        const auto writable = // Or it could not be removed.
            qScopeGuard([this] { chmod(QFile::encodeName(folder()).constData(), 0700); });
        SqliteDefaultsStore store(folder());
        store.setInteger(u"number", 7);
        QCOMPARE(store.integer(u"number"), std::optional<qint64>(7));
    }

    void foreignObjectsInTheDatabaseAreNotRun_data()
    {
        QTest::addColumn<QByteArray>("sql");
        QTest::newRow("a trigger") << QByteArray("CREATE TRIGGER t AFTER INSERT ON defaults BEGIN"
                                                 " DELETE FROM defaults; END");
        QTest::newRow("an endless view")
            << QByteArray("ALTER TABLE defaults RENAME TO old; CREATE VIEW defaults AS WITH RECURSIVE"
                          " n(i) AS (SELECT 1 UNION ALL SELECT i+1 FROM n) SELECT i AS key, 'data' AS type,"
                          " zeroblob(9999) AS value FROM n");
        QTest::newRow("other columns") << QByteArray("DROP TABLE defaults; CREATE TABLE defaults(a, b)");
        QTest::newRow("another table") << QByteArray("CREATE TABLE other(a)");
    }

    void foreignObjectsInTheDatabaseAreNotRun()
    {
        QFETCH(QByteArray, sql);
        store(1);
        run(sql);
        {
            SqliteDefaultsStore store(folder());
            QCOMPARE(problemsOf(store), QList{Problem::setAside});
            store.setInteger(u"number", 2);
        }
        QCOMPARE(stored(), std::optional<qint64>(2));
    }

    // What is not loaded takes no memory.
    void aHugeValueIsNotLoaded()
    {
        store(1);
        run("INSERT INTO defaults VALUES('historyEntries', 'data', zeroblob(300000000))");
        SqliteDefaultsStore store(folder());
        QCOMPARE(problemsOf(store), QList<Problem>());
        QCOMPARE(store.integer(u"number"), std::optional<qint64>(1));
        QCOMPARE(store.data(u"historyEntries"), std::nullopt);
    }

    void anotherUsersOpenFolderIsNotWrittenTo()
    {
        if (geteuid() != 0)
            QSKIP("only the superuser can play another user");
        QVERIFY(QDir().mkpath(folder()));
        QCOMPARE(chmod(QFile::encodeName(home()).constData(), 0755), 0);
        QCOMPARE(chmod(QFile::encodeName(folder()).constData(), 0777), 0);
        QCOMPARE(seteuid(nobody), 0);
        {
            SqliteDefaultsStore store(folder());
            store.setInteger(u"number", 7);
            QCOMPARE(store.integer(u"number"), std::optional<qint64>(7));
        }
        QCOMPARE(seteuid(0), 0);
        QVERIFY(QDir(folder()).isEmpty());
    }
};

static const RegisteredTest<HostileStoreTests> registered;
#include "HostileStoreTests.moc"
