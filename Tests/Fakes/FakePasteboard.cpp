#include "FakePasteboard.h"

#include <utility>

void FakePasteboard::readString(TextHandler done)
{
    using namespace std::chrono_literals;
    ++reads;
    const auto answer = [this, asked = changeCount_, text = contents_, isAnswered = answers,
                         done = std::move(done)] {
        done(isAnswered && (asked == changeCount_ || givesOutdated) ? text : std::nullopt);
    };
    if (answers && answerDelay == 0ns)
        answer();
    else
        scheduler_.after(answers ? answerDelay : 1s, answer);
}

void FakePasteboard::clear()
{
    change({});
    cleared_ = true;
    ++clears;
}

void FakePasteboard::setString(std::string text, OutcomeHandler outcome)
{
    written.push_back(text);
    if (cleared_)
        contents_ = std::move(text);
    else
        change(std::move(text));
    cleared_ = false;
    if (!outcome)
        return;
    scheduler_.after(settleTime, [this, written = changeCount_, outcome = std::move(outcome)] {
        outcome(gives && changeCount_ == written);
    });
}

void FakePasteboard::change(std::optional<std::string> contents)
{
    contents_ = std::move(contents);
    cleared_ = false;
    ++changeCount_;
    if (notifies) {
        scheduler_.after(std::chrono::nanoseconds(0), [this] {
            if (changeHandler_)
                changeHandler_();
        });
    }
}
