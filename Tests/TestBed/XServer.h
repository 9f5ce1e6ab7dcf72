#pragma once

#include <QByteArray>
#include <QProcess>
#include <QStringList>

// A private X server without a screen to look at; ends with the object.
class XServer {
public:
    // `environment`: NAME=VALUE for the server itself.
    explicit XServer(const QStringList &environment = {});
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
