#pragma once

#include <QByteArray>
#include <QProcess>

// A private X server without a screen to look at; ends with the object.
class XServer {
public:
    XServer();
    ~XServer();
    Q_DISABLE_COPY_MOVE(XServer)

    // False when it did not come up.
    [[nodiscard]] bool isRunning() const { return !display_.isEmpty(); }

    // As for $DISPLAY.
    [[nodiscard]] const QByteArray &display() const { return display_; }

    // The environment of a program that is to run in it.
    [[nodiscard]] QProcessEnvironment environment() const;
    void end();

private:
    QProcess process_;
    QByteArray display_;
};
