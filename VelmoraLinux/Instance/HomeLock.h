#pragma once

#include <VelmoraLinux/Process/FileDescriptor.h>

#include <QString>

// Makes sure that one program at a time uses a folder of settings: sessions with buses of their own may have
// the same home. The kernel gives the lock back when the process ends, however it ends.
class HomeLock {
public:
    explicit HomeLock(const QString &folder);

    // True when the folder is ours now, and where there can be no lock. `note` tells others where we run.
    [[nodiscard]] bool take(const QByteArray &note);
    // The same while the program that has it is known to be ending.
    [[nodiscard]] bool takeFromPredecessor(const QByteArray &note);
    // The process that has the folder and its note, such as "process 12, display :0".
    [[nodiscard]] QByteArray holder() const;

private:
    [[nodiscard]] bool tryToLock() const;
    void write(const QByteArray &note) const;

    FileDescriptor file_;
};
