#pragma once

#include "DefaultsValue.h"
#include "LogTidier.h"
#include "StoredPieces.h"

#include <sys/types.h>

#include <memory>

struct sqlite3;

// The database file of the defaults store: one row per key with its type, long data in pieces.
//
// Waits a few milliseconds at most for another process that is writing. After a failure of `open` it is
// closed; after a failure of `write` the caller closes it.
class SqliteFile {
public:
    enum class Outcome {
        done,
        refused, // Not readable or not writable now; a later attempt may succeed.
        damaged, // The file is not a database of ours, or a corrupt one.
        newer,   // Written by a later version of this program: it is not changed.
    };

    SqliteFile() = default;
    ~SqliteFile();
    Q_DISABLE_COPY_MOVE(SqliteFile)

    // Opens the file at `path`, which is created when missing, and reads its values into `values`. A file
    // that was written by a later version is read as far as possible, and closed.
    [[nodiscard]] Outcome open(const QString &path, DefaultsValues &values);
    // Writes `changes` and removes from them what was written: all together, or if that is refused as many as can
    // be. What was written survives SIGKILL as soon as this returns. `removesText`: what they replace must not
    // stay readable.
    [[nodiscard]] Outcome write(DefaultsChanges &changes, bool removesText);

    // Returns when text that was removed is no longer in the write-ahead log, or cannot be removed from it now.
    void finishTidying() { tidier_.finish(); }

    void close();
    // Closes without touching the files that are at the path now.
    void closeWithoutCheckpoint();

    [[nodiscard]] bool isOpen() const { return database_ != nullptr; }

    // False when another program has removed or replaced the file.
    [[nodiscard]] bool isStillInPlace() const;

    // Reads the file at `path` through a private copy: works for a locked file and in a read-only folder.
    static void readCopy(const QString &path, DefaultsValues &values);
    // Renames the file and its write-ahead log to a free name. The new name; empty on failure.
    static QString setAside(const QString &path);
    // Overwrites and removes all files that `setAside` renamed.
    static void eraseSetAside(const QString &path);

private:
    struct Closer {
        void operator()(sqlite3 *database) const;
    };

    void forbidForeignCode();
    Outcome checkSchema();
    Outcome createSchema();
    Outcome load(DefaultsValues &values);
    Outcome writeOne(const QString &key, const std::optional<DefaultsValue> &value);
    Outcome writeTogether(const DefaultsChanges &changes);
    void writeOneByOne(DefaultsChanges &changes);
    void keepLogOnClose(bool keep);

    std::unique_ptr<sqlite3, Closer> database_;
    QString path_;
    dev_t device_ = 0;
    ino_t inode_ = 0;
    StoredPieces pieces_;
    LogTidier tidier_;
    int writesSinceTidying_ = 0;
};
