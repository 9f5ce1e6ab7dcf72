#pragma once

#include <QString>
#include <QUrl>

#include <functional>

// What an update is doing, as far as the user is concerned.
enum class UpdateStep {
    permission,  // May the program look for updates by itself?
    checking,    // The feed is being read; can be cancelled.
    upToDate,    // Nothing newer.
    found,       // A newer version is offered.
    downloading, // Bytes arrive; can be cancelled.
    verifying,   // Length, signature and contents are being examined.
    ready,       // Everything is in place for the new version.
    installing,  // The new version takes over.
    managed,     // Somebody else updates this copy: see `manager`.
    failed,      // See `problem`; the installed version is as it was.
};

enum class UpdateProblem {
    none,
    insecure,     // The address, or one it leads to, is not HTTPS.
    unreachable,  // No answer, a certificate nobody vouches for, or an error from the server.
    feedDamaged,  // The feed is not what a feed has to be.
    tooLarge,     // More bytes than announced or allowed.
    noSpace,      // The disk is full.
    badSignature, // The signature or the length is not the one of this archive.
    contents,     // Properly signed, but not an archive that may be installed here, or another version.
    notReplaced,  // The installed files could not be replaced.
    notStarted,   // The new version did not start; the old one was put back.
    badKey,       // This copy's own key is unusable.
};

// Everything a window needs in order to show one step. Fields that say nothing for the step are empty.
struct UpdateReport {
    UpdateStep step = UpdateStep::checking;
    QString version;    // The version offered, as users know it.
    QString ownVersion; // The version that runs.
    QString notes;      // Release notes, plain text.
    QUrl page;          // What to read instead of installing; empty for an ordinary update.
    qint64 received = 0;
    qint64 total = 0; // 0: not known.
    UpdateProblem problem = UpdateProblem::none;
    QString manager;              // Who updates this copy.
    bool mayBePutOff = true;      // False for a critical update.
    bool otherSystemOnly = false; // There is a newer version, but not for this system.

    bool operator==(const UpdateReport &) const = default;
};

enum class UpdateAnswer {
    accept,  // Yes: check by yourself, install, relaunch; or simply "OK".
    dismiss, // No, later, cancel; also when the window was closed.
    skip,    // Never offer this version again by yourself.
};

// Shows the user what an update is doing and takes the answers. One thing is on show at a time.
class UpdateUserDriver {
public:
    using AnswerHandler = std::function<void(UpdateAnswer)>;
    enum class Attention {
        front, // The user asked: take the focus.
        quiet, // Nobody asked: appear without taking the focus.
    };

    virtual ~UpdateUserDriver() = default;
    // Shows `report` in place of what was on show.
    virtual void show(const UpdateReport &report, Attention attention) = 0;
    virtual void bringToFront() = 0;
    // Nothing is on show any more; no answer comes after this.
    virtual void dismiss() = 0;
    // `handler` gets one answer for each step on show that asks for one.
    virtual void setAnswerHandler(AnswerHandler handler) = 0;
};
