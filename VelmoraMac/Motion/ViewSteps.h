#pragma once

#include <VelmoraPlatform/DelayedSteps.h>

#include <QJSValue>
#include <QObject>
#include <QQmlParserStatus>
#include <qqmlintegration.h>

#include <optional>

// The delayed steps of a view, on the clock of its animations. Starting over cancels the pending steps.
class ViewSteps : public QObject, public QQmlParserStatus {
    Q_OBJECT
    Q_INTERFACES(QQmlParserStatus)
    QML_ELEMENT

public:
    using QObject::QObject;

    Q_INVOKABLE void startOver();
    Q_INVOKABLE void after(double seconds, const QJSValue &step);

    void classBegin() override;

    void componentComplete() override {}

private:
    std::optional<DelayedSteps> steps_;
};
