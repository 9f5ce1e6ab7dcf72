#pragma once

#include "HttpsDownloader.h"
#include "Installation.h"
#include "ReplacingInstaller.h"
#include "UpdateSchedule.h"
#include "UpdateSession.h"

#include <VelmoraPlatform/BundleInfo.h>
#include <VelmoraPlatform/DelayedSteps.h>
#include <VelmoraPlatform/Updater.h>

// The updater: composes schedule, session and installer.
//
// A managed copy is never checked by schedule; when the user asks, the answer is what updates it.
class StandardUpdater : public Updater {
public:
    struct Dependencies {
        DefaultsStore &defaults;
        Scheduler &scheduler;
        const WallClock &clock;
        const BundleInfo &bundle;
        UpdateUserDriver &driver;
        Installation installation;
        QString downloadFolder;
        HttpsDownloader::Settings network;
        std::function<void(const QUrl &page)> openPage;
        std::function<void()> quit; // Quits the application.
        // Calls `done` once, when a start has succeeded: the old version that an update left beside this one is not
        // touched before, because HandoverWatch may have to bring it back.
        std::function<void(std::function<void()> done)> whenStanding;
        bool lastUpdateFailed = false; // This version was started again because its successor failed.
    };

    // Starts at once.
    StandardUpdater(Dependencies dependencies, const UpdateConfiguration &configuration);

    void checkForUpdates() override;
    [[nodiscard]] bool canCheckForUpdates() const override;
    void setChangeHandler(ChangeHandler handler) override;

private:
    void start();
    void answer(UpdateAnswer answer);
    void show(UpdateStep step, UpdateOutcome problem, UpdateUserDriver::Attention attention);
    void noteChange();
    [[nodiscard]] UpdateHost host() const;
    [[nodiscard]] UpdateSchedule::Settings scheduleSettings() const;
    [[nodiscard]] QString ownVersion() const;   // What is compared.
    [[nodiscard]] QString shownVersion() const; // What users read.

    Dependencies dependencies_;
    std::optional<UpdateKey> key_;
    std::unique_ptr<HttpsDownloader> downloader_;
    std::unique_ptr<ReplacingInstaller> installer_; // Null when managed or without a usable key.
    std::unique_ptr<UpdateSession> session_;        // Together with the installer.
    UpdateSchedule schedule_;
    std::optional<UpdateStep> ownStep_; // What is shown outside a session.
    ChangeHandler changed_ = [] {};
    bool couldCheck_ = true;
    DelayedSteps steps_;
};
