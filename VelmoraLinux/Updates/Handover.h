#pragma once

#include <VelmoraPlatform/DelayedSteps.h>
#include <VelmoraPlatform/UpdateUserDriver.h>

#include <QSocketNotifier>
#include <QString>

#include <functional>
#include <memory>

// Replaces the running process by one of a newly installed version.
//
// The new process is started with one end of a socket pair. Once it is able to run it sends its version over the
// socket, then waits until the other end is closed, which happens when this process ends; only then it claims what
// only one process can own. So a version that cannot start is noticed while the old one still runs.
class Handover {
public:
    using Done = std::function<void(UpdateOutcome problem)>;

    explicit Handover(Scheduler &scheduler);
    ~Handover();

    // Starts `program`. `done` runs once, later: without a problem when the new process has reported `version`; that
    // process then waits for the end of this one, also after this object was destroyed. With notStarted when
    // it ended, reported something else or nothing in time; it is then killed.
    void start(const QString &program, const QString &version, Done done);

    // After `done` with none: the socket to the new process, which this object does not close, and that
    // process.
    [[nodiscard]] int socket() const { return accepted_; }

    [[nodiscard]] pid_t successor() const { return child_; }

private:
    void readMessage();
    void finish(UpdateOutcome problem);

    Scheduler &scheduler_;
    DelayedSteps limit_; // Of the new process's start.
    QByteArray expected_;
    QByteArray received_;
    Done done_;
    int socket_ = -1; // Open until the new process has reported.
    int accepted_ = -1;
    pid_t child_ = 0;
    std::unique_ptr<QSocketNotifier> notifier_;
};

// The new process's end of the handover.
class HandoverReceiver {
public:
    // The handover that `arguments` of this process name; null without one.
    [[nodiscard]] static std::unique_ptr<HandoverReceiver> fromArguments(int count,
                                                                         const char *const *arguments);
    ~HandoverReceiver();

    // Reports that this process can run and is `version`, and waits until the old one has ended; at most half a
    // minute. To be called before anything is claimed that only one process can own, and before any window is shown.
    void takeOver(const QString &version);
    // Reports that this process has taken over: its services and its icon are there. Until then its end
    // brings the old version back.
    void reportStanding() const;

private:
    explicit HandoverReceiver(int socket)
        : socket_(socket)
    {
    }

    int socket_;
};
