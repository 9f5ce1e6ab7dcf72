#pragma once

#include <VelmoraPlatform/UpdateUserDriver.h>

#include <QString>

#include <functional>

// An archive on its way to being installed.
struct DownloadedUpdate {
    QString path;
    qint64 length = 0;
    QString signature;
    QString version;
};

// Brings a downloaded archive into place. Nothing waits: work is done elsewhere and told on the main thread.
class UpdateInstaller {
public:
    using Done = std::function<void(UpdateProblem problem)>;

    virtual ~UpdateInstaller() = default;
    // A path for the next download, in a place that only the user can enter; empty when there is none.
    [[nodiscard]] virtual QString downloadPath() = 0;
    // Verifies `update` and makes it ready beside the installed version.
    virtual void prepare(const DownloadedUpdate &update, Done done) = 0;
    // Exchanges the versions and starts the new one. `done` with none: this process is to end now. With a
    // problem, the old version is back in place.
    virtual void install(Done done) = 0;
    // Drops what was downloaded or made ready.
    virtual void discard() = 0;
};
