#pragma once

#include <QByteArray>
#include <QtGlobal>

#include <condition_variable>
#include <mutex>
#include <thread>

// Moves the write-ahead log of an SQLite database into the database and empties it, on a thread of its own,
// because that waits for the disk. Text that was removed is gone from the log afterwards.
//
// It waits for a quiet moment first, so that many writes cost one tidying. Somebody else who reads the database
// can prevent it; isTidy() then stays false, and the next request tries again.
class LogTidier {
public:
    LogTidier() = default;
    // What was requested is done before.
    ~LogTidier();
    Q_DISABLE_COPY_MOVE(LogTidier)

    // The log of the database at `path` is to be tidied soon.
    void request(const QByteArray &path);
    // Returns when everything requested was tried.
    void finish();
    // What was requested is no longer wanted; returns when nothing of it is under way.
    void cancel();
    // Nothing may be written without this lock. Who holds it waits for no disk: the log is emptied only when the
    // disk has everything.
    [[nodiscard]] std::unique_lock<std::mutex> lockForWriting();
    [[nodiscard]] bool isTidy();

private:
    void run();
    void waitForQuiet(std::unique_lock<std::mutex> &lock);
    bool tidy(std::unique_lock<std::mutex> &lock);

    std::mutex mutex_;
    std::condition_variable changed_;
    QByteArray path_;
    quint64 writes_ = 0; // How often the lock for writing was taken.
    bool isRequested_ = false;
    bool isBusy_ = false;
    bool isTidy_ = true;
    bool isInHurry_ = false; // Somebody waits in finish().
    bool isEnding_ = false;
    std::thread thread_; // Begun by the first request.
};
