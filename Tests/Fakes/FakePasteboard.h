#pragma once

#include "VirtualTime.h"

#include <VelmoraPlatform/Pasteboard.h>

#include <chrono>
#include <optional>
#include <string>
#include <vector>

// A clipboard in memory; the test plays the other programs that copy to it.
class FakePasteboard final : public Pasteboard {
public:
    explicit FakePasteboard(Scheduler &scheduler)
        : scheduler_(scheduler)
    {
    }

    [[nodiscard]] Reach reach() const override { return reach_; }

    void setReachHandler(ReachHandler handler) override { reachHandler_ = std::move(handler); }

    [[nodiscard]] qint64 changeCount() const override { return changeCount_; }

    void readString(TextHandler done) override;
    void clear() override;
    void setString(std::string text, OutcomeHandler outcome) override;
    using Pasteboard::setString;

    [[nodiscard]] bool notifiesChanges() const override { return notifies; }

    void setChangeHandler(ChangeHandler handler) override { changeHandler_ = std::move(handler); }

    void setLostHandler(LostHandler) override {} // This one stays.

    // Another program copies a text, or something without one.
    void copy(std::string text) { change(std::move(text)); }

    void copyImage() { change({}); }

    void setReach(Reach reach)
    {
        reach_ = reach;
        if (reachHandler_)
            reachHandler_();
    }

    [[nodiscard]] const std::optional<std::string> &contents() const { return contents_; }

    bool notifies = true;
    bool answers = true; // False: the owner does not answer, and a read times out after a second.
    std::chrono::nanoseconds answerDelay{0}; // From the asking to the answer.
    std::vector<std::string> written;        // Our own texts, in order.
    int reads = 0;
    int clears = 0;
    bool givesOutdated = false; // A late answer is what was asked for, though a newer copy has come.
    // From a write to its outcome, and what that is. A copy by another program in between overtakes it.
    std::chrono::nanoseconds settleTime{0};
    bool gives = true;

private:
    void change(std::optional<std::string> contents);

    Scheduler &scheduler_;
    std::optional<std::string> contents_;
    qint64 changeCount_ = 7; // Not zero: a fresh process meets a clipboard with a past.
    bool cleared_ = false;
    Reach reach_ = Reach::all;
    ChangeHandler changeHandler_;
    ReachHandler reachHandler_;
};
