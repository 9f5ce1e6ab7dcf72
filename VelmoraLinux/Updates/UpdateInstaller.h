#pragma once

#include <VelmoraPlatform/UpdateUserDriver.h>

#include <QString>

#include <functional>

// A downloaded archive, not yet verified.
struct DownloadedUpdate {
    QString path;
    qint64 length = 0;
    QString signature;
    QString version;
};

// Installs a downloaded archive. No call blocks: results are reported on the main thread.
class UpdateInstaller {
public:
    using Done = std::function<void(UpdateOutcome problem)>;

    virtual ~UpdateInstaller() = default;
    // A path for the next download, in a folder that only the user can enter; empty on failure.
    [[nodiscard]] virtual QString downloadPath() = 0;
    // Verifies `update` and unpacks it beside the installed version.
    virtual void prepare(const DownloadedUpdate &update, Done done) = 0;
    // Exchanges the versions and starts the new one. Without a problem this process has to end now. With a
    // problem: the old version is installed again.
    virtual void install(Done done) = 0;
    // After a failure with foreignFile: the file, absolute.
    [[nodiscard]] virtual QString foreignFile() const = 0;
    // Removes what was downloaded or prepared.
    virtual void discard() = 0;
};
