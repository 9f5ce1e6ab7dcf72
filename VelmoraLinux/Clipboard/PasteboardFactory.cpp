#include "PasteboardFactory.h"

#include "X11Pasteboard.h"

#include <array>

namespace {

// A session without any clipboard.
class NoPasteboard final : public Pasteboard {
public:
    [[nodiscard]] bool isReachable() const override { return false; }

    [[nodiscard]] qint64 changeCount() const override { return 0; }

    void readString(TextHandler done) override { done({}); }

    void clear() override {}

    void setString(std::string) override {}

    [[nodiscard]] bool notifiesChanges() const override { return true; }

    void setChangeHandler(ChangeHandler) override {}

    void setLostHandler(LostHandler) override {}
};

// Null when this back end cannot work in the present session.
using Candidate = std::unique_ptr<Pasteboard> (*)(Scheduler &scheduler);

std::unique_ptr<Pasteboard> x11Pasteboard(Scheduler &scheduler)
{
    return X11Pasteboard::create(scheduler);
}

// The one that sees most first.
constexpr std::array<Candidate, 1> candidates = {x11Pasteboard};

} // namespace

std::unique_ptr<Pasteboard> makePasteboard(Scheduler &scheduler)
{
    for (const Candidate make : candidates) {
        if (auto pasteboard = make(scheduler))
            return pasteboard;
    }
    return std::make_unique<NoPasteboard>();
}
