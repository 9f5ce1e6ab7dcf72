#pragma once

#include <VelmoraPlatform/Scheduler.h>
#include <VelmoraPlatform/UpdateUserDriver.h>

#include <QSocketNotifier>
#include <QString>

#include <functional>
#include <memory>

// Hands the place of the running process over to a freshly installed version.
//
// The new process is started with one end of a socket. It says which version it is once it is able to run,
// then waits until the other end closes, which happens when this process is gone; only then it takes over
// what there is one of. So a version that cannot start is noticed while the old one still runs.
class Handover {
public:
    using Done = std::function<void(UpdateProblem problem)>;

    explicit Handover(Scheduler &scheduler);
    ~Handover();

    // Starts `program`. `done` runs once, later: with none when the new process said that it is `version`; it
    // then waits for the end of this process, however late that comes after the end of this object. With
    // notStarted when it ended, said something else or said nothing in time; it is then made to end.
    void start(const QString &program, const QString &version, Done done);

private:
    void hear();
    void finish(UpdateProblem problem);

    Scheduler &scheduler_;
    QByteArray expected_;
    QByteArray heard_;
    Done done_;
    int socket_ = -1; // While the new process is being listened to.
    pid_t child_ = 0;
    std::unique_ptr<QSocketNotifier> notifier_;
    std::shared_ptr<char> round_;
};

// The new process's side.
class HandoverGuest {
public:
    // The guest's end, when `arguments` of this process name one.
    [[nodiscard]] static std::unique_ptr<HandoverGuest> fromArguments(int count,
                                                                      const char *const *arguments);
    ~HandoverGuest();

    // Says that this process can run and is `version`, and waits until the old one is gone; at most half a
    // minute. To be called before anything is claimed that only one process can have, and while nothing is on
    // the screen.
    void takeOver(const QString &version);

private:
    explicit HandoverGuest(int socket)
        : socket_(socket)
    {
    }

    int socket_;
};
