#pragma once

#include <QObject>
#include <QPointer>
#include <QQmlParserStatus>
#include <qqmlintegration.h>

class AnimationClock;

// A number that goes from 0 to 1 and back without end, easing in and out on each way of `duration` seconds.
//
// Stays at 0 while it is not running.
class BreathingValue : public QObject, public QQmlParserStatus {
    Q_OBJECT
    Q_INTERFACES(QQmlParserStatus)
    QML_ELEMENT
    Q_PROPERTY(double duration MEMBER duration_ NOTIFY durationChanged)
    Q_PROPERTY(bool running READ isRunning WRITE setRunning NOTIFY runningChanged)
    Q_PROPERTY(double value READ value NOTIFY valueChanged)

public:
    explicit BreathingValue(QObject *parent = nullptr);
    ~BreathingValue() override;

    [[nodiscard]] bool isRunning() const { return running_; }

    [[nodiscard]] double value() const { return value_; }

    void setRunning(bool running);

    void classBegin() override {}

    void componentComplete() override;

    // The ease-in-out curve: the progress at `time`, both from 0 to 1.
    [[nodiscard]] static double eased(double time);

Q_SIGNALS:
    void durationChanged();
    void runningChanged();
    void valueChanged();

private:
    void step();
    void apply();
    void take(double value);

    double duration_ = 1;
    double value_ = 0;
    double startedAt_ = 0;
    bool running_ = false;
    QPointer<AnimationClock> clock_;
};
