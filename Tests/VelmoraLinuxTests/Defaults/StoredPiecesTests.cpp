// Long values are stored in pieces, and groups of values together.
#include "TestStore.h"

#include <VelmoraLinux/Defaults/SqliteDefaultsStore.h>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <Runner/RegisteredTest.h>
#include <sqlite3.h>

#include <optional>

using namespace Qt::StringLiterals;

class StoredPiecesTests : public QObject, private TestHome {
    Q_OBJECT

private Q_SLOTS:

    void init() { begin(); }

    void aLongValueCostsThePiecesThatAreNew()
    {
        QByteArrayList pieces = {"["};
        for (char letter = 'a'; letter < 'z'; ++letter)
            pieces << QByteArray(100000, letter) << ",";
        SqliteDefaultsStore store(folder());
        store.setPieces(u"history", pieces);
        SqliteDefaultsStore(folder()).setInteger(u"number", 1); // Leaves an empty log behind.
        const qint64 before = QFile(path() + u"-wal"_s).size();
        pieces.insert(1, "new");
        pieces.insert(2, ",");
        pieces.remove(4, 2);
        store.setPieces(u"history", pieces);
        const qint64 written = QFile(path() + u"-wal"_s).size() - before;
        QVERIFY2(written < 64 * 1024 + 110000,
                 qPrintable(QString::number(written))); // The removed one is overwritten.
        QCOMPARE(store.data(u"history"), std::optional(pieces.join()));
        QCOMPARE(SqliteDefaultsStore(folder()).data(u"history"), std::optional(pieces.join()));
    }

    void aLongValueMayBecomeShortLongOrAnotherType()
    {
        const QByteArray longer(50000, 'l');
        SqliteDefaultsStore store(folder());
        store.setPieces(u"value", {longer, longer, QByteArray(), "end"});
        QCOMPARE(SqliteDefaultsStore(folder()).data(u"value"), std::optional(longer + longer + "end"));
        store.setData(u"value", "short");
        QCOMPARE(SqliteDefaultsStore(folder()).data(u"value"), std::optional(QByteArray("short")));
        store.setPieces(u"value", {"begin", longer});
        QCOMPARE(SqliteDefaultsStore(folder()).data(u"value"), std::optional("begin" + longer));
        store.setInteger(u"value", 7);
        QCOMPARE(SqliteDefaultsStore(folder()).data(u"value"), std::nullopt);
        QCOMPARE(SqliteDefaultsStore(folder()).integer(u"value"), std::optional<qint64>(7));
        store.setPieces(u"value", {longer});
        store.remove(u"value");
        QCOMPARE(SqliteDefaultsStore(folder()).data(u"value"), std::nullopt);
    }

    void aPieceThatLeavesALongValueLeavesNoTraceOnDisk()
    {
        const QByteArray secret = QByteArray("a very private link ").repeated(500);
        const QByteArray other = QByteArray("an ordinary one ").repeated(500);
        SqliteDefaultsStore store(folder());
        store.setPieces(u"history", {"[", other, ",", secret, "]"});
        store.setPieces(u"history", {"[", "new", ",", other, "]"});
        store.finishTidying();
        QCOMPARE(filesThatContain(folder(), "private"), QStringList());
    }

    void aGroupIsWrittenTogether()
    {
        SqliteDefaultsStore store(folder());
        {
            const DefaultsStore::Group group(store);
            store.setInteger(u"number", 1);
            store.setString(u"text", u"two"_s);
            QCOMPARE(store.integer(u"number"), std::optional<qint64>(1));
            QCOMPARE(stored(), std::nullopt);
        }
        QCOMPARE(stored(), std::optional<qint64>(1));
    }

    void theFileOfTheFirstVersionIsTakenOver()
    {
        store(1);
        sqlite3 *database = nullptr;
        QCOMPARE(sqlite3_open(QFile::encodeName(path()).constData(), &database), SQLITE_OK);
        QCOMPARE(sqlite3_exec(database,
                              "DROP TABLE pieces; DROP TABLE lists; PRAGMA user_version=1;"
                              "INSERT INTO defaults VALUES('history', 'data', zeroblob(99999))",
                              nullptr, nullptr, nullptr),
                 SQLITE_OK);
        QCOMPARE(sqlite3_close(database), SQLITE_OK);
        {
            SqliteDefaultsStore store(folder());
            QCOMPARE(store.data(u"history"), std::optional(QByteArray(99999, '\0')));
            store.setData(u"history", QByteArray(88888, 'x'));
        }
        QCOMPARE(SqliteDefaultsStore(folder()).data(u"history"), std::optional(QByteArray(88888, 'x')));
        QCOMPARE(stored(), std::optional<qint64>(1));
    }

    void aListWithAMissingPieceCountsAsMissing()
    {
        SqliteDefaultsStore(folder()).setPieces(u"history", {QByteArray(5000, 'a'), QByteArray(5000, 'b')});
        sqlite3 *database = nullptr;
        QCOMPARE(sqlite3_open(QFile::encodeName(path()).constData(), &database), SQLITE_OK);
        QCOMPARE(sqlite3_exec(database, "DELETE FROM pieces WHERE row=2", nullptr, nullptr, nullptr),
                 SQLITE_OK);
        QCOMPARE(sqlite3_close(database), SQLITE_OK);
        SqliteDefaultsStore store(folder());
        QCOMPARE(store.data(u"history"), std::nullopt);
        store.setPieces(u"history", {QByteArray(5000, 'c')});
        QCOMPARE(SqliteDefaultsStore(folder()).data(u"history"), std::optional(QByteArray(5000, 'c')));
    }
};

static const RegisteredTest<StoredPiecesTests> registered;
#include "StoredPiecesTests.moc"
