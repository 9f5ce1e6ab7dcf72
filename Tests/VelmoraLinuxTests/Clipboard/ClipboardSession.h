#pragma once

#include <VelmoraLinux/Clipboard/TransferLimits.h>
#include <VelmoraPlatform/Pasteboard.h>
#include <VelmoraPlatform/Scheduler.h>

#include <memory>
#include <optional>
#include <string>

// A session of a desktop with a clipboard, a back end that works in it, and another program that copies and pastes.
class ClipboardSession {
public:
    virtual ~ClipboardSession() = default;

    // Null when the back end cannot work here.
    [[nodiscard]] virtual std::unique_ptr<Pasteboard> makePasteboard(Scheduler &scheduler,
                                                                     const TransferLimits &limits) = 0;

    // The other program copies. False on failure.
    virtual bool copyText(const std::string &text) = 0;
    // The same, while our event loop stands still.
    virtual bool copyUnheard(const std::string &text) = 0;
    virtual bool copySecret(const std::string &text) = 0;
    virtual bool copyImage() = 0;
    // What the other program gets when it pastes what we wrote.
    [[nodiscard]] virtual std::optional<std::string> pasted() = 0;
    // The clipboard goes away for good.
    virtual void end() = 0;
};

[[nodiscard]] std::unique_ptr<ClipboardSession> makeX11Session();
// Of a Wayland compositor with ext-data-control, or its predecessor of wlroots.
[[nodiscard]] std::unique_ptr<ClipboardSession> makeExtSession();
[[nodiscard]] std::unique_ptr<ClipboardSession> makeWlrSession();
