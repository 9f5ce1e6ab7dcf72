#pragma once

#include "AppcastReader.h"
#include "Downloader.h"
#include "UpdateChoice.h"
#include "UpdateInstaller.h"

#include <VelmoraPlatform/DefaultsStore.h>
#include <VelmoraPlatform/UpdateUserDriver.h>

#include <functional>

// One check for updates and the steps that follow, up to the relaunch. At most one runs at a time.
class UpdateSession {
public:
    struct Dependencies {
        Downloader &downloader;
        UpdateInstaller &installer;
        UpdateUserDriver &driver;
        DefaultsStore &defaults;
        std::function<UpdateHost()> host;
        std::function<void(const QUrl &page)> openPage;
        std::function<void()> quit;
        std::function<void()> changed; // `isVisible` or `isRunning` may have changed.
    };

    UpdateSession(Dependencies dependencies, QUrl feed, QString ownVersion);

    // Begins a check; no effect while one is running.
    void check(CheckKind kind);
    // The user's answer to what is shown.
    void answer(UpdateAnswer answer);

    [[nodiscard]] bool isRunning() const { return step_.has_value(); }

    // Whether something is shown that can be brought to the front.
    [[nodiscard]] bool isVisible() const { return visible_; }

private:
    void readFeed(UpdateOutcome problem, const QByteArray &bytes);
    void offer(const UpdateChoice &choice);
    void answerOffer(UpdateAnswer answer);
    void download();
    void prepare();
    void install();
    void show(const UpdateReport &report);
    void enter(UpdateStep step);
    void fail(UpdateProblem problem);
    void finish();
    [[nodiscard]] UpdateReport report(UpdateStep step) const;

    Dependencies dependencies_;
    QUrl feed_;
    QString ownVersion_;
    CheckKind kind_ = CheckKind::byUser;
    std::optional<UpdateStep> step_; // Nothing while no session runs.
    bool visible_ = false;
    UpdateChoice choice_;
    DownloadedUpdate update_;
};
