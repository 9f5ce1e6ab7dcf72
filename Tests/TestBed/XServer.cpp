#include "XServer.h"

#include <sys/prctl.h>

#include <csignal>

using namespace Qt::StringLiterals;

XServer::XServer(const QStringList &environment)
{
    process_.setEnvironment(QProcess::systemEnvironment() + environment);
    // A test that crashes takes its server with it.
    process_.setChildProcessModifier([] { prctl(PR_SET_PDEATHSIG, SIGTERM); });
    // It chooses a free display number itself and prints it once it is ready. Without -noreset it would start
    // over when its last client leaves, and the next one would find it away.
    process_.start(u"Xvfb"_s, {u"-displayfd"_s, u"1"_s, u"-screen"_s, u"0"_s, u"1280x800x24"_s,
                               u"-nolisten"_s, u"tcp"_s, u"-noreset"_s});
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
    environment.insert(u"DISPLAY"_s, QString::fromLatin1(display_));
    environment.remove(u"WAYLAND_DISPLAY"_s);
    environment.remove(u"XAUTHORITY"_s);
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
