#pragma once

#include <VelmoraLinux/Process/FileDescriptor.h>
#include <VelmoraPlatform/DelayedSteps.h>
#include <VelmoraPlatform/Scheduler.h>

#include <QtGlobal>

#include <list>
#include <memory>
#include <string>

// Writes texts into the pipes of those who paste, a part whenever there is room, never waiting for them.
//
// A reader that stops reading is given up after ten seconds. SIGPIPE has to be ignored by the process: a
// reader that closes early is no error.
class PipeWriters {
public:
    explicit PipeWriters(Scheduler &scheduler);
    ~PipeWriters();
    Q_DISABLE_COPY_MOVE(PipeWriters)

    void write(FileDescriptor pipe, std::shared_ptr<const std::string> text);

private:
    struct Writer;
    using Place = std::list<Writer>::iterator;

    void writeMore(Place writer);
    void end(Place writer);
    void watch();

    Scheduler &scheduler_;
    std::list<Writer> writers_;
    bool isWatching_ = false;
    DelayedSteps steps_;
};
