#pragma once

#include "DefaultsValue.h"

#include <sys/types.h>

#include <memory>

struct sqlite3;

// The database file of the defaults store: one row per key with its type.
//
// Waits a few milliseconds at most for another process that is writing. Not open after any failure but
// `refused` from `write`.
class SqliteFile {
public:
    enum class Outcome {
        done,
        refused, // Not readable or not writable now; another time may do.
        damaged, // What lies there is no such database, or no longer.
        newer,   // Written by a later version of this program: not ours to touch.
    };

    SqliteFile() = default;
    ~SqliteFile();
    Q_DISABLE_COPY_MOVE(SqliteFile)

    // Opens the file at `path`, which is made when missing, and reads what it holds into `values`. A file
    // that was written by a later version is read as far as it can be, and closed.
    [[nodiscard]] Outcome open(const QString &path, DefaultsValues &values);
    // All of `changes` or nothing. Safe against the end of this process as soon as it returns.
    [[nodiscard]] Outcome write(const DefaultsChanges &changes);
    void close();
    // Closes without touching anything that lies at the path now.
    void abandon();

    [[nodiscard]] bool isOpen() const { return database_ != nullptr; }

    // False when somebody has removed or replaced the file behind our back.
    [[nodiscard]] bool isStillInPlace() const;

    // Reads the file at `path` through a private copy: also one that is locked, or lies in a read-only
    // folder.
    static void readCopy(const QString &path, DefaultsValues &values);
    // Renames the file and its companions so that nothing of them is lost. The new name, empty on failure.
    static QString setAside(const QString &path);

private:
    struct Closer {
        void operator()(sqlite3 *database) const;
    };

    Outcome checkSchema();
    Outcome createSchema();
    Outcome load(DefaultsValues &values);
    Outcome writeOne(const QString &key, const std::optional<DefaultsValue> &value);
    void keepCompanionsOnClose(bool keep);

    std::unique_ptr<sqlite3, Closer> database_;
    QString path_;
    dev_t device_ = 0;
    ino_t inode_ = 0;
};
