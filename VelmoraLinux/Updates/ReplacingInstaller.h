#pragma once

#include "Handover.h"
#include "Installation.h"
#include "Replacement.h"
#include "UpdateInstaller.h"
#include "VerifiedArchive.h"

#include <QObject>
#include <QThreadPool>

// Installs by replacing this copy and handing over to the new version. Disk operations run in a second thread.
class ReplacingInstaller : public UpdateInstaller {
public:
    // Downloads go to `folder`, which is created with mode 0700.
    ReplacingInstaller(Installation installation, UpdateKey key, QString folder, Scheduler &scheduler);

    [[nodiscard]] QString downloadPath() override;
    void prepare(const DownloadedUpdate &update, Done done) override;
    void install(Done done) override;
    [[nodiscard]] QString foreignFile() const override;
    void discard() override;

private:
    // Runs `work` in the second thread, in the order of the calls, and then `done` in the main thread.
    void inBackground(std::function<UpdateOutcome()> work, Done done);
    void handOver(const Done &done);

    Installation installation_;
    Replacement replacement_;
    UpdateKey key_;
    QString folder_;
    QString version_; // Of what is ready to be installed.
    Handover handover_;
    QObject home_; // Context of `done`: after its destruction results are dropped.
    QThreadPool worker_;
};
