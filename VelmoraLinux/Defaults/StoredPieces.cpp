#include "StoredPieces.h"

#include "SqliteStatement.h"

#include <QStringList>

#include <utility>

namespace {

constexpr qsizetype longestShortValue = 4096;
constexpr qsizetype mostPieces = 10000; // Of one value that is read.

qsizetype sizeOf(const QByteArrayList &pieces)
{
    qsizetype size = 0;
    for (const QByteArray &piece : pieces)
        size += piece.size();
    return size;
}

// The numbers of the rows in the order of the pieces.
QList<qint64> rowsOf(const QByteArray &list)
{
    QList<qint64> rows;
    for (const QByteArray &number : list.split(' '))
        rows.append(number.toLongLong());
    return rows;
}

int removeRow(sqlite3 *database, qint64 row)
{
    SqliteStatement removal(database, "DELETE FROM pieces WHERE row=?1");
    removal.bind(1, row);
    return removal.step();
}

} // namespace

const char *const StoredPieces::schema =
    "CREATE TABLE IF NOT EXISTS pieces(row INTEGER PRIMARY KEY NOT NULL, value BLOB NOT NULL) STRICT;"
    "CREATE TABLE IF NOT EXISTS lists(key TEXT PRIMARY KEY NOT NULL, rows TEXT NOT NULL) STRICT;";

bool StoredPieces::isShort(const QByteArrayList &pieces)
{
    return sizeOf(pieces) <= longestShortValue;
}

int StoredPieces::load(sqlite3 *database, DefaultsValues &values, qsizetype &budget)
{
    stored_.clear();
    SqliteStatement lists(database, "SELECT key, rows FROM lists WHERE length(rows) <= 200000 LIMIT 100");
    SqliteStatement piece(database, "SELECT value FROM pieces WHERE row=?1 AND length(value) <= ?2");
    int code = lists.step();
    for (; code == SQLITE_ROW; code = lists.step()) {
        const QString key = QString::fromUtf8(lists.blob(0));
        const QList<qint64> rows = rowsOf(lists.blob(1));
        QByteArrayList pieces;
        Numbers numbers;
        int found = rows.size() <= mostPieces ? SQLITE_ROW : SQLITE_DONE;
        for (auto row = rows.cbegin(); row != rows.cend() && found == SQLITE_ROW; ++row) {
            piece.reset();
            piece.bind(1, *row);
            piece.bind(2, qint64(budget));
            found = piece.step();
            if (found != SQLITE_ROW)
                break;
            pieces.append(piece.blob(0));
            budget -= pieces.constLast().size();
            numbers.insert(pieces.constLast(), *row);
        }
        if (found != SQLITE_ROW && found != SQLITE_DONE)
            return found;
        // Known also when a piece is missing or too long to be read, so that the next write removes the rest.
        stored_.insert(key, numbers);
        if (found == SQLITE_ROW)
            values[key].emplace<QByteArrayList>(pieces);
    }
    return code;
}

int StoredPieces::write(sqlite3 *database, const QString &key, const QByteArrayList &pieces)
{
    const Numbers before = stored_.value(key);
    Numbers numbers;
    QStringList rows;
    SqliteStatement insertion(database, "INSERT INTO pieces(value) VALUES(?1)");
    for (const QByteArray &piece : pieces) {
        qint64 row = numbers.value(piece, before.value(piece));
        if (row == 0) {
            insertion.reset();
            insertion.bind(1, piece);
            if (const int code = insertion.step(); code != SQLITE_DONE)
                return code;
            row = sqlite3_last_insert_rowid(database);
        }
        numbers.insert(piece, row);
        rows.append(QString::number(row));
    }
    for (auto piece = before.cbegin(); piece != before.cend(); ++piece) {
        if (numbers.contains(piece.key()))
            continue;
        if (const int code = removeRow(database, piece.value()); code != SQLITE_DONE)
            return code;
    }
    SqliteStatement list(database, "INSERT INTO lists(key, rows) VALUES(?1, ?2)"
                                   " ON CONFLICT(key) DO UPDATE SET rows=excluded.rows");
    list.bind(1, key);
    list.bind(2, rows.join(u' '));
    written_.insert(key, numbers);
    return list.step();
}

int StoredPieces::remove(sqlite3 *database, const QString &key)
{
    const Numbers before = stored_.value(key);
    for (const qint64 row : before) {
        if (const int code = removeRow(database, row); code != SQLITE_DONE)
            return code;
    }
    written_.insert(key, {});
    SqliteStatement list(database, "DELETE FROM lists WHERE key=?1");
    list.bind(1, key);
    return list.step();
}

void StoredPieces::keepWritten()
{
    for (auto value = written_.cbegin(); value != written_.cend(); ++value)
        stored_.insert(value.key(), value.value());
    written_.clear();
}
