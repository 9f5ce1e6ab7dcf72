#pragma once

#include "SelectionReadings.h"
#include "TransferLimits.h"

#include <VelmoraLinux/X11/XcbConnection.h>
#include <VelmoraPlatform/DelayedSteps.h>
#include <VelmoraPlatform/Scheduler.h>

#include <QByteArray>
#include <QtGlobal>

#include <functional>
#include <memory>

// The secrets of X11 programs in a Wayland session.
//
// A compositor passes on what these programs copy, but not everywhere the mark by which a password manager asks not
// to be read: sway passes on only names with a slash. So the owner of the X11 clipboard is asked itself. For
// what a Wayland program has copied that is the compositor, which answers at once.
class BridgedSecrets {
public:
    using Answer = std::function<void(bool mayBeRead)>;

    // Null without an X server: no program made for X11 can have copied anything then. An empty display name
    // stands for $DISPLAY.
    [[nodiscard]] static std::unique_ptr<BridgedSecrets>
    create(Scheduler &scheduler, const QByteArray &displayName = {}, TransferLimits limits = {});
    ~BridgedSecrets() = default;
    Q_DISABLE_COPY_MOVE(BridgedSecrets)

    // Asks whether the present copy may be read. The answer comes from the event loop; a further question
    // makes the one before void. An owner that does not answer within the limits is left alone: no.
    void ask(Answer answer);
    void giveUp();

private:
    BridgedSecrets(std::unique_ptr<XcbConnection> connection, Scheduler &scheduler, TransferLimits limits);

    void handleEvent(const xcb_generic_event_t &event);
    void answerLater(bool mayBeRead);

    std::unique_ptr<XcbConnection> connection_;
    SelectionReadings readings_;
    Answer answer_; // Null while nothing is asked.
    DelayedSteps steps_;
};
