#pragma once

#include <VelmoraPlatform/UpdateUserDriver.h>

#include <QList>

// Remembers what an updater showed; the test gives the answers.
class RecordingUpdateDriver final : public UpdateUserDriver {
public:
    void show(const UpdateReport &report, Attention attention) override
    {
        reports.append(report);
        attentions.append(attention);
        onShow = true;
    }

    void bringToFront() override { ++broughtToFront; }

    void dismiss() override { onShow = false; }

    void setAnswerHandler(AnswerHandler handler) override { answer = std::move(handler); }

    // The steps shown so far; repeated ones, as while bytes arrive, once.
    [[nodiscard]] QList<UpdateStep> steps() const
    {
        QList<UpdateStep> result;
        for (const UpdateReport &report : reports) {
            if (result.isEmpty() || result.last() != report.step)
                result.append(report.step);
        }
        return result;
    }

    QList<UpdateReport> reports;
    QList<Attention> attentions;
    bool onShow = false;
    int broughtToFront = 0;
    AnswerHandler answer;
};
