#pragma once

#include <VelmoraPlatform/Scheduler.h>

#include <QElapsedTimer>
#include <QObject>
#include <qqmlintegration.h>

#include <chrono>
#include <memory>
#include <vector>

class QQmlEngine;

// The time of everything that moves in the views of one QML engine.
//
// Beats about sixty times a second while anything is subscribed or any step waits, and rests otherwise. Tests
// and the rehearsal take it over with setVirtual(): then only pass() moves it and every picture can be
// repeated.
class AnimationClock : public QObject, public Scheduler {
    Q_OBJECT
    QML_ELEMENT
    QML_SINGLETON

public:
    explicit AnimationClock(QObject *parent = nullptr);
    ~AnimationClock() override;

    // The one of `engine`. Null only while the module is not linked in.
    [[nodiscard]] static AnimationClock *in(QQmlEngine &engine);
    // The one of the engine that made `item`. Null for an object that QML did not create.
    [[nodiscard]] static AnimationClock *of(const QObject *item);

    [[nodiscard]] std::chrono::nanoseconds now() const override;
    void after(std::chrono::nanoseconds delay, Step step) override;
    // The same moment in seconds.
    [[nodiscard]] double seconds() const;

    // From now on time stands still unless pass() moves it.
    void setVirtual();
    // Time runs by itself again.
    void setReal();
    // Moves virtual time; steps run at their own moments, in order, and every beat comes after the steps due.
    void pass(std::chrono::nanoseconds time);

    // Whether the clock beats for `mover`; the `beat` signal is its own to connect.
    void setMoving(const QObject *mover, bool moving);

Q_SIGNALS:
    void beat();

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
    bool runsDue_ = false;         // While steps run, time stands at the moment they are due.
    std::vector<Waiting> waiting_; // By moment; equal moments in the order of asking.
    std::vector<const QObject *> movers_;
};
