#include "SessionBus.h"

using namespace Qt::StringLiterals;

SessionBus::SessionBus()
{
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
