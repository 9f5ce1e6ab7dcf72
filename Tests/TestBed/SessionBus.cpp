#include "SessionBus.h"

SessionBus::SessionBus()
{
    daemon_.start(u"dbus-daemon"_qs, {u"--session"_qs, u"--nofork"_qs, u"--print-address"_qs});
    while (!daemon_.canReadLine() && daemon_.waitForReadyRead())
        continue;
    address_ = QString::fromLatin1(daemon_.readLine().trimmed());
}

SessionBus::~SessionBus()
{
    daemon_.terminate();
    daemon_.waitForFinished();
}
