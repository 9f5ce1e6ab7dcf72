#include "IconPlaceNotice.h"

#include <VelmoraMac/Texts/LocalizedStrings.h>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {
constexpr auto patience = 10s;
}

IconPlaceNotice::IconPlaceNotice(Dependencies dependencies)
    : dependencies_(std::move(dependencies))
    , steps_(dependencies_.scheduler)
{
    steps_.after(patience, [this] { look(); });
}

QString IconPlaceNotice::t(const QString &english, const QString &german) const
{
    return LocalizedStrings::choose(english, german, dependencies_.appState.language());
}

void IconPlaceNotice::look()
{
    if (dependencies_.statusItem.hasPlace())
        return;
    dependencies_.notifications.post(
        {.title = t(u"Velmora is running"_s, u"Velmora läuft"_s),
         .text =
             t(u"It cleans the links you copy. This desktop has no place for its icon: start Velmora again "
               u"to open the settings. Icons appear with a panel that has a system tray, on GNOME with the "
               u"extension AppIndicator."_s,
               u"Es bereinigt die Links, die du kopierst. Dieser Desktop hat keinen Platz für das Icon: "
               u"Starte Velmora noch einmal, um die Einstellungen zu öffnen. Icons erscheinen in einer "
               u"Leiste mit Systembereich, unter GNOME mit der Erweiterung AppIndicator."_s),
         .activated = dependencies_.openSettings});
}
