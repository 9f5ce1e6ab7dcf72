#pragma once

#include <sqlite3.h>

#include <chrono>
#include <thread>

// How long SQLite wants to sleep on the thread of this object, which it does when it waits for a lock. While an object
// exists, that thread does not sleep: the time is virtual. At most one object exists at a time, and no database may be
// open at its end.
class RecordedSleeps {
public:
    RecordedSleeps()
    {
        static_cast<sqlite3_vfs &>(fileSystem_) = *real_;
        fileSystem_.zName = "velmora-recorded-sleeps";
        fileSystem_.pNext = nullptr;
        fileSystem_.xSleep = sleep;
        fileSystem_.sleeps = this;
        sqlite3_vfs_register(&fileSystem_, 1);
    }

    ~RecordedSleeps()
    {
        sqlite3_vfs_register(real_, 1);
        sqlite3_vfs_unregister(&fileSystem_);
    }

    RecordedSleeps(const RecordedSleeps &) = delete;
    RecordedSleeps &operator=(const RecordedSleeps &) = delete;

    [[nodiscard]] std::chrono::microseconds total() const { return total_; }

private:
    struct FileSystem : sqlite3_vfs {
        RecordedSleeps *sleeps;
    };

    static int sleep(sqlite3_vfs *fileSystem, int microseconds)
    {
        RecordedSleeps &self = *static_cast<FileSystem *>(fileSystem)->sleeps;
        if (std::this_thread::get_id() != self.thread_)
            return self.real_->xSleep(self.real_, microseconds);
        self.total_ += std::chrono::microseconds(microseconds);
        return microseconds;
    }

    std::thread::id thread_ = std::this_thread::get_id();
    std::chrono::microseconds total_{};
    sqlite3_vfs *real_ = sqlite3_vfs_find(nullptr);
    FileSystem fileSystem_{};
};
