#include "SessionBus.h"

#include <sys/prctl.h>

#include <csignal>

using namespace Qt::StringLiterals;

SessionBus::SessionBus()
{
    // A test that crashes takes its bus with it.
    daemon_.setChildProcessModifier([] { prctl(PR_SET_PDEATHSIG, SIGTERM); });
    daemon_.start(u"dbus-daemon"_s, {u"--session"_s, u"--nofork"_s, u"--print-address"_s});
    while (!daemon_.canReadLine() && daemon_.waitForReadyRead())
        continue;
    address_ = QString::fromLatin1(daemon_.readLine().trimmed());
}

SessionBus::~SessionBus()
{
    daemon_.terminate();
    daemon_.waitForFinished();
}
