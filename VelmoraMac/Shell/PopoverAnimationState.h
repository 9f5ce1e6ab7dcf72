#pragma once

#include <QObject>
#include <qqmlintegration.h>

// Starts the popover view's closing animation.
class PopoverAnimationState : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("Made by the status bar controller")
    // How many animated closes have begun.
    Q_PROPERTY(int closeRequest READ closeRequest NOTIFY closeRequestChanged)

public:
    using QObject::QObject;

    [[nodiscard]] int closeRequest() const { return closeRequest_; }

    void requestClose()
    {
        ++closeRequest_;
        Q_EMIT closeRequestChanged();
    }

Q_SIGNALS:
    void closeRequestChanged();

private:
    int closeRequest_ = 0;
};
