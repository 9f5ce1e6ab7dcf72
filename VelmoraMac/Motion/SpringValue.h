#pragma once

#include "SpringCurve.h"

#include <QObject>
#include <QPointer>
#include <QQmlParserStatus>
#include <qqmlintegration.h>

class AnimationClock;
class Surroundings;

// A number that follows another one on a spring: `value` moves to `to` whenever `to` changes.
//
// A new target keeps the current value and velocity. Where the user asks for less motion, the value goes to its
// target in a short linear fade.
class SpringValue : public QObject, public QQmlParserStatus {
    Q_OBJECT
    Q_INTERFACES(QQmlParserStatus)
    QML_ELEMENT
    Q_PROPERTY(double to READ to WRITE setTo NOTIFY toChanged)
    Q_PROPERTY(double response READ response WRITE setResponse NOTIFY curveChanged)
    Q_PROPERTY(double dampingFraction READ dampingFraction WRITE setDampingFraction NOTIFY curveChanged)
    Q_PROPERTY(double value READ value NOTIFY valueChanged)
    Q_PROPERTY(bool moving READ isMoving NOTIFY movingChanged)

public:
    explicit SpringValue(QObject *parent = nullptr);
    ~SpringValue() override;

    [[nodiscard]] double to() const { return to_; }

    [[nodiscard]] double response() const { return curve_.response; }

    [[nodiscard]] double dampingFraction() const { return curve_.dampingFraction; }

    [[nodiscard]] double value() const { return state_.value; }

    [[nodiscard]] bool isMoving() const { return moving_; }

    // Before the object is complete at once, afterwards on the spring.
    void setTo(double to);
    void setResponse(double response);
    void setDampingFraction(double fraction);
    // Sets `to` and `value` at once.
    Q_INVOKABLE void jump(double to);

    void classBegin() override {}

    void componentComplete() override;

Q_SIGNALS:
    void toChanged();
    void curveChanged();
    void valueChanged();
    void movingChanged();

private:
    void setCurve(const SpringCurve &curve);
    void begin();
    void step();
    [[nodiscard]] SpringCurve::State stateNow() const;
    void take(const SpringCurve::State &state);
    void setMoving(bool moving);

    SpringCurve curve_;
    SpringCurve::State start_;
    SpringCurve::State state_;
    double to_ = 0;
    double startedAt_ = 0;
    bool complete_ = false;
    bool moving_ = false;
    QPointer<AnimationClock> clock_;
    QPointer<Surroundings> surroundings_;
};
