#pragma once

#include <VelmoraPlatform/Scheduler.h>

#include <QElapsedTimer>
#include <QObject>
#include <qqmlintegration.h>

#include <chrono>
#include <memory>
#include <vector>

class QQmlEngine;

// The clock of all animations in the views of one QML engine.
//
// Ticks about sixty times a second while an animation runs or a step is pending; idle otherwise. Tests and the
// rehearsal make it virtual with setVirtual(): then only pass() advances it, and every picture can be repeated.
class AnimationClock : public QObject, public Scheduler {
    Q_OBJECT
    QML_ELEMENT
    QML_SINGLETON

public:
    explicit AnimationClock(QObject *parent = nullptr);
    ~AnimationClock() override;

    // The clock of `engine`. Null only when the module is not linked in.
    [[nodiscard]] static AnimationClock *in(QQmlEngine &engine);
    // The clock of the engine that made `item`. Null for an object that QML did not create.
    [[nodiscard]] static AnimationClock *of(const QObject *item);

    [[nodiscard]] std::chrono::nanoseconds now() const override;
    void after(std::chrono::nanoseconds delay, Step step) override;
    // The same moment in seconds.
    [[nodiscard]] double seconds() const;

    // From now on only pass() advances the time.
    void setVirtual();
    // Time runs again.
    void setReal();
    // Advances virtual time; steps run at their due times, in order, and the tick comes after the steps due.
    void pass(std::chrono::nanoseconds time);

    // Whether the clock has to tick for `mover`, which connects to `ticked` itself.
    void setMoving(const QObject *mover, bool moving);

Q_SIGNALS:
    void ticked();

private:
    class Driver;

    struct Waiting {
        std::chrono::nanoseconds due;
        Step step;
    };

    void advance(std::chrono::nanoseconds moment);
    void runDue(std::chrono::nanoseconds moment);
    void runOrRest();

    std::unique_ptr<Driver> driver_;
    QElapsedTimer timer_;
    std::chrono::nanoseconds virtualNow_{0};
    bool isVirtual_ = false;
    bool runsDue_ = false;         // While steps run, the time is the one at which they are due.
    std::vector<Waiting> waiting_; // By due time; equal times in the order of the calls.
    std::vector<const QObject *> movers_;
};
