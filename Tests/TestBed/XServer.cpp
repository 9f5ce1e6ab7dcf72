#include "XServer.h"

XServer::XServer(const QStringList &environment)
{
    process_.setEnvironment(QProcess::systemEnvironment() + environment);
    // It chooses a free display number itself and prints it once it is ready. Without -noreset it would start
    // over when its last client leaves, and the next one would find it away.
    process_.start(u"Xvfb"_qs, {u"-displayfd"_qs, u"1"_qs, u"-screen"_qs, u"0"_qs, u"1280x800x24"_qs,
                                u"-nolisten"_qs, u"tcp"_qs, u"-noreset"_qs});
    while (!process_.canReadLine() && process_.waitForReadyRead())
        continue;
    const QByteArray number = process_.readLine().trimmed();
    if (!number.isEmpty())
        display_ = ':' + number;
}

XServer::~XServer()
{
    end();
}

QProcessEnvironment XServer::environment() const
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(u"DISPLAY"_qs, QString::fromLatin1(display_));
    environment.remove(u"WAYLAND_DISPLAY"_qs);
    environment.remove(u"XAUTHORITY"_qs);
    return environment;
}

void XServer::end()
{
    process_.terminate();
    if (!process_.waitForFinished(5000)) {
        process_.kill();
        process_.waitForFinished();
    }
}
