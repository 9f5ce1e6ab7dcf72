#pragma once

#include <QString>
#include <QUrl>

#include <functional>
#include <optional>

// The steps of an update that a user can see.
enum class UpdateStep {
    permission,  // The question whether to check for updates automatically.
    checking,    // The feed is being read; can be cancelled.
    upToDate,    // Nothing newer.
    found,       // A newer version is offered.
    downloading, // Bytes arrive; can be cancelled.
    verifying,   // Length, signature and contents are being examined.
    ready,       // Everything is in place for the new version.
    installing,  // The new version takes over.
    managed,     // This copy is updated by `manager`, or not at all because of `problem`.
    failed,      // See `problem`; the installed version is as it was.
};

enum class UpdateProblem {
    insecure,     // The address, or one it leads to, is not HTTPS.
    unreachable,  // No answer, an untrusted certificate, or an error from the server.
    feedDamaged,  // The feed cannot be read.
    tooLarge,     // More bytes than announced or allowed.
    noSpace,      // The disk is full.
    badSignature, // The signature or the length does not match the archive.
    contents,     // Correctly signed, but cannot be installed here, or is another version than announced.
    notReplaced,  // The installed files could not be replaced.
    notStarted,   // The new version did not start; the old one was restored.
    badKey,       // This copy's own key is unusable.
    sharedFolder, // Other users can write to the folder `place`, so nothing is installed there.
    foreignFile,  // The program's folder contains `place`, which is not the program's.
};

using UpdateOutcome = std::optional<UpdateProblem>; // Nothing: no problem.

// Everything a window needs to show one step. Fields that the step does not use are empty.
struct UpdateReport {
    UpdateStep step = UpdateStep::checking;
    QString version;    // The version offered, as users read it.
    QString ownVersion; // The version that runs.
    QString notes;      // Release notes, plain text.
    QUrl page;          // What to read instead of installing; empty for an ordinary update.
    qint64 received = 0;
    qint64 total = 0; // 0: not known.
    UpdateOutcome problem;
    QString manager;              // What updates this copy.
    QString place;                // The file or folder that `problem` is about.
    bool mayBePutOff = true;      // False for a critical update.
    bool otherSystemOnly = false; // There is a newer version, but not for this system.

    bool operator==(const UpdateReport &) const = default;
};

enum class UpdateAnswer {
    accept,  // Yes: check automatically, install, relaunch; or "OK".
    dismiss, // No, later, cancel; also when the window was closed.
    skip,    // Do not offer this version again in scheduled checks.
};

// Shows the steps of an update to the user and returns the answers. One step is shown at a time.
class UpdateUserDriver {
public:
    using AnswerHandler = std::function<void(UpdateAnswer)>;
    enum class Attention {
        front, // The user requested the check: the window takes the focus.
        quiet, // A scheduled check: the window appears without taking the focus.
    };

    virtual ~UpdateUserDriver() = default;
    // Shows `report` in place of the previous one.
    virtual void show(const UpdateReport &report, Attention attention) = 0;
    virtual void bringToFront() = 0;
    // Shows nothing any more; no answer follows.
    virtual void dismiss() = 0;
    // `handler` gets one answer for each shown step that has a question.
    virtual void setAnswerHandler(AnswerHandler handler) = 0;
};
