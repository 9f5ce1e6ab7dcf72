#pragma once

#include "DefaultsValue.h"

#include <QHash>

struct sqlite3;

// The long data values of the database file: each a list of pieces, and each piece a row of its own, so that a
// write costs the pieces that are new. Members give SQLite's result codes; a failed write is rolled back by the
// caller, who then calls forgetWritten().
class StoredPieces {
public:
    // Creates what is missing of the tables.
    static const char *const schema;

    // Whether a value is stored as one row of the table of all values instead.
    [[nodiscard]] static bool isShort(const QByteArrayList &pieces);

    // Adds what is stored to `values`: at most `budget` bytes, from which what was read is taken.
    int load(sqlite3 *database, DefaultsValues &values, qsizetype &budget);
    // Both within a transaction.
    int write(sqlite3 *database, const QString &key, const QByteArrayList &pieces);
    int remove(sqlite3 *database, const QString &key);

    // The transaction was committed, or rolled back.
    void keepWritten();

    void forgetWritten() { written_.clear(); }

private:
    using Numbers = QHash<QByteArray, qint64>; // Of the rows that hold the pieces of one value.

    QHash<QString, Numbers> stored_;
    QHash<QString, Numbers> written_; // In this transaction.
};
