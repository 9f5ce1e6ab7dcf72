#include "LogTidier.h"

#include "SqliteStatement.h"

#include <chrono>
#include <memory>
#include <utility>

namespace {

constexpr auto quiet = std::chrono::milliseconds(300);
constexpr auto longestWaitForQuiet = std::chrono::seconds(3);
constexpr int mostAttempts = 5; // While the database is written to all the time.

struct Closer {
    void operator()(sqlite3 *database) const { sqlite3_close(database); }
};

using Database = std::unique_ptr<sqlite3, Closer>;

Database opened(const QByteArray &path)
{
    sqlite3 *database = nullptr;
    const int code =
        sqlite3_open_v2(path.constData(), &database, SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOMUTEX, nullptr);
    Database owned(database);
    if (code != SQLITE_OK)
        return nullptr;
    sqlite3_db_config(database, SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, 1, nullptr);
    return owned;
}

bool checkpoint(sqlite3 *database, const char *command)
{
    SqliteStatement statement(database, command);
    // 1 in the first column: busy. The others: pages of the log, and of these in the database.
    return statement.step() == SQLITE_ROW && statement.integer(0) == 0 &&
           statement.integer(1) == statement.integer(2);
}

} // namespace

LogTidier::~LogTidier()
{
    if (!thread_.joinable())
        return;
    {
        const std::lock_guard lock(mutex_);
        isEnding_ = true;
    }
    changed_.notify_all();
    thread_.join();
}

void LogTidier::request(const QByteArray &path)
{
    const std::lock_guard lock(mutex_);
    path_ = path;
    isRequested_ = true;
    isTidy_ = false;
    if (!thread_.joinable())
        thread_ = std::thread([this] { run(); });
    changed_.notify_all();
}

void LogTidier::finish()
{
    std::unique_lock lock(mutex_);
    isInHurry_ = true;
    changed_.notify_all();
    changed_.wait(lock, [this] { return !isRequested_ && !isBusy_; });
    isInHurry_ = false;
}

void LogTidier::cancel()
{
    std::unique_lock lock(mutex_);
    isRequested_ = false;
    changed_.notify_all();
    changed_.wait(lock, [this] { return !isBusy_; });
}

std::unique_lock<std::mutex> LogTidier::lockForWriting()
{
    std::unique_lock lock(mutex_);
    ++writes_;
    return lock;
}

bool LogTidier::isTidy()
{
    const std::lock_guard lock(mutex_);
    return isTidy_;
}

void LogTidier::run()
{
    std::unique_lock lock(mutex_);
    while (true) {
        changed_.wait(lock, [this] { return isRequested_ || isEnding_; });
        if (!isRequested_)
            return;
        waitForQuiet(lock);
        if (!std::exchange(isRequested_, false))
            continue;
        isBusy_ = true;
        isTidy_ = tidy(lock);
        isBusy_ = false;
        changed_.notify_all();
    }
}

void LogTidier::waitForQuiet(std::unique_lock<std::mutex> &lock)
{
    const auto last = std::chrono::steady_clock::now() + longestWaitForQuiet;
    for (quint64 before = writes_ + 1; before != writes_ && std::chrono::steady_clock::now() < last;) {
        before = writes_;
        if (changed_.wait_for(lock, quiet, [this] { return isEnding_ || isInHurry_; }))
            return;
    }
}

// The disk is waited for without the lock. Emptying the log then only shortens a file.
bool LogTidier::tidy(std::unique_lock<std::mutex> &lock)
{
    const QByteArray path = path_;
    for (int attempt = 0; attempt < mostAttempts; ++attempt) {
        const quint64 writes = writes_;
        lock.unlock();
        const Database database = opened(path);
        const bool isMoved = database && checkpoint(database.get(), "PRAGMA wal_checkpoint(PASSIVE)");
        lock.lock();
        if (!isMoved)
            return false;
        if (writes == writes_)
            return checkpoint(database.get(), "PRAGMA wal_checkpoint(TRUNCATE)");
    }
    return false;
}
