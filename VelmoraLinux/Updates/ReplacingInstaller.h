#pragma once

#include "Handover.h"
#include "Installation.h"
#include "Replacement.h"
#include "UpdateInstaller.h"
#include "VerifiedArchive.h"

#include <QObject>
#include <QThreadPool>

// Installs by replacing this copy and handing over to the new version; the disk's work is done in a second
// thread.
class ReplacingInstaller : public UpdateInstaller {
public:
    // Downloads go to `folder`, which is made for the user alone.
    ReplacingInstaller(Installation installation, UpdateKey key, QString folder, Scheduler &scheduler);

    [[nodiscard]] QString downloadPath() override;
    void prepare(const DownloadedUpdate &update, Done done) override;
    void install(Done done) override;
    void discard() override;

private:
    // Runs `work` in the second thread, one piece after the other, and then `done` in the main one.
    void inBackground(std::function<UpdateProblem()> work, Done done);
    void handOver(const Done &done);

    Installation installation_;
    Replacement replacement_;
    UpdateKey key_;
    QString folder_;
    QString version_; // Of what is ready to be installed.
    Handover handover_;
    QObject home_; // Gone: results are dropped.
    QThreadPool worker_;
};
