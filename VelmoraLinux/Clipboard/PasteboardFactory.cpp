#include "PasteboardFactory.h"

#include "DataControlPasteboard.h"
#include "X11Pasteboard.h"

#include <VelmoraLinux/X11/WindowManagerName.h>

#include <QCoreApplication>

#include <algorithm>
#include <array>
#include <string_view>

namespace {

// A session without any clipboard.
class NoPasteboard final : public Pasteboard {
public:
    explicit NoPasteboard(Scheduler &scheduler)
        : scheduler_(scheduler)
    {
    }

    [[nodiscard]] Reach reach() const override { return Reach::none; }

    void setReachHandler(ReachHandler) override {}

    [[nodiscard]] qint64 changeCount() const override { return 0; }

    void readString(TextHandler done) override { done({}); }

    void clear() override {}

    void setString(std::string, OutcomeHandler outcome) override
    {
        if (outcome)
            scheduler_.after({}, [outcome = std::move(outcome)] { outcome(false); });
    }

    [[nodiscard]] bool notifiesChanges() const override { return true; }

    void setChangeHandler(ChangeHandler) override {}

    void setLostHandler(LostHandler) override {}

private:
    Scheduler &scheduler_;
};

// Null when this back end cannot work in the present session.
using Candidate = std::unique_ptr<Pasteboard> (*)(Scheduler &scheduler);

std::unique_ptr<Pasteboard> dataControlPasteboard(Scheduler &scheduler)
{
    auto pasteboard =
        DataControlPasteboard::create(scheduler, {.keeper = QCoreApplication::applicationFilePath()});
    if (pasteboard)
        pasteboard->setBridgedSecrets(BridgedSecrets::create(scheduler));
    return pasteboard;
}

// What an X server shows of the clipboard. In a Wayland session it is a bridge: most compositors forward
// copies only while an X11 window has the focus, Mutter and what comes from it always do.
Pasteboard::Reach reachOfX11()
{
    if (!WaylandConnection::open())
        return Pasteboard::Reach::all;
    const XcbServer server = connectToXServer();
    const std::string manager = server ? windowManagerName(server.get()) : std::string();
    constexpr std::array<std::string_view, 3> forwarding = {"GNOME Shell", "Mutter", "Muffin"};
    const bool forwards = std::any_of(forwarding.begin(), forwarding.end(), [&manager](auto name) {
        return manager.find(name) != std::string::npos;
    });
    return forwards ? Pasteboard::Reach::all : Pasteboard::Reach::onlyX11;
}

std::unique_ptr<Pasteboard> x11Pasteboard(Scheduler &scheduler)
{
    return X11Pasteboard::create(scheduler, {}, {}, reachOfX11());
}

// The one that sees most comes first.
constexpr auto candidates = std::to_array<Candidate>({dataControlPasteboard, x11Pasteboard});

} // namespace

std::unique_ptr<Pasteboard> makePasteboard(Scheduler &scheduler)
{
    for (const Candidate make : candidates) {
        if (auto pasteboard = make(scheduler))
            return pasteboard;
    }
    return std::make_unique<NoPasteboard>(scheduler);
}
