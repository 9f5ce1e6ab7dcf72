#pragma once

#include <QByteArray>
#include <QList>
#include <QMap>
#include <QString>

#include <memory>
#include <mutex>
#include <random>

// What SQLite does to its files, step by step, and what of it a disk holds when the power is cut behind any step.
//
// While an object exists, it is SQLite's default file system. Files of `folder` are recorded; nothing is ever synced
// for real. At most one object exists at a time, and no database may be open at its end.
class RecordedDisk {
public:
    // What becomes of the writes that were not synced before the cut. A disk may write them in any order, and parts
    // of them.
    enum class Unsynced { lost, kept, someKept };

    using Files = QMap<QString, QByteArray>; // By name.

    explicit RecordedDisk(QString folder);
    ~RecordedDisk();
    Q_DISABLE_COPY_MOVE(RecordedDisk)

    // How many steps were taken so far.
    [[nodiscard]] qsizetype steps() const;
    [[nodiscard]] qsizetype syncCount() const;
    // The files as they are after the first `steps` steps and a cut.
    [[nodiscard]] Files afterCut(qsizetype steps, Unsynced unsynced, std::mt19937 &random) const;

    struct Step {
        enum Kind { writes, truncates, removes, syncs };

        Kind kind;
        QString file;
        qint64 offset = 0; // Where it writes, or the new size.
        QByteArray bytes;
        bool isSynced = false; // A removal that is on the disk at once.
    };

    void record(Step step);
    [[nodiscard]] bool isRecorded(const QString &path) const;

private:
    struct FileSystem;

    QString folder_;
    mutable std::mutex mutex_;
    QList<Step> steps_;
    std::unique_ptr<FileSystem> fileSystem_;
};
