#pragma once

#include <QByteArray>
#include <QString>

#include <sqlite3.h>

// A prepared statement; a failure to prepare it or to bind a value is reported by the first step.
class SqliteStatement {
public:
    SqliteStatement(sqlite3 *database, const char *text)
        : code_(sqlite3_prepare_v2(database, text, -1, &statement_, nullptr))
    {
    }

    ~SqliteStatement() { sqlite3_finalize(statement_); }

    Q_DISABLE_COPY_MOVE(SqliteStatement)

    int step() { return code_ == SQLITE_OK ? sqlite3_step(statement_) : code_; }

    // Ready for the next values.
    void reset() { sqlite3_reset(statement_); }

    void bind(int place, bool value) { noteError(sqlite3_bind_int(statement_, place, value)); }

    void bind(int place, qint64 value) { noteError(sqlite3_bind_int64(statement_, place, value)); }

    void bind(int place, const QString &value)
    {
        const QByteArray text = value.toUtf8();
        noteError(sqlite3_bind_text64(statement_, place, text.constData(), sqlite3_uint64(text.size()),
                                      SQLITE_TRANSIENT, SQLITE_UTF8));
    }

    // `value` outlives the steps.
    void bind(int place, const QByteArray &value)
    {
        // Never a null pointer: SQLite would store NULL.
        noteError(sqlite3_bind_blob64(statement_, place, value.isNull() ? "" : value.constData(),
                                      sqlite3_uint64(value.size()), SQLITE_STATIC));
    }

    [[nodiscard]] int type(int column) const { return sqlite3_column_type(statement_, column); }

    [[nodiscard]] qint64 integer(int column) const { return sqlite3_column_int64(statement_, column); }

    [[nodiscard]] int size(int column) const { return sqlite3_column_bytes(statement_, column); }

    [[nodiscard]] QByteArray blob(int column) const
    {
        const auto *bytes = static_cast<const char *>(sqlite3_column_blob(statement_, column));
        return {bytes, sqlite3_column_bytes(statement_, column)};
    }

private:
    void noteError(int code)
    {
        if (code_ == SQLITE_OK)
            code_ = code;
    }

    sqlite3_stmt *statement_ = nullptr;
    int code_ = SQLITE_OK;
};
