#include "TelemetryEventName.h"

using namespace Qt::StringLiterals;

QString wireName(TelemetryEventName event)
{
    switch (event) {
    case TelemetryEventName::appFirstLaunch:
        return u"app_first_launch"_s;
    case TelemetryEventName::appOpened:
        return u"app_opened"_s;
    case TelemetryEventName::appQuit:
        return u"app_quit"_s;
    case TelemetryEventName::menuPopoverOpened:
        return u"menu_popover_opened"_s;
    case TelemetryEventName::settingsOpened:
        return u"settings_opened"_s;
    case TelemetryEventName::cleaningEnabled:
        return u"cleaning_enabled"_s;
    case TelemetryEventName::cleaningDisabled:
        return u"cleaning_disabled"_s;
    case TelemetryEventName::linkCleaned:
        return u"link_cleaned"_s;
    case TelemetryEventName::cleaningUndoUsed:
        return u"cleaning_undo_used"_s;
    case TelemetryEventName::ignoredDomainAdded:
        return u"ignored_domain_added"_s;
    case TelemetryEventName::ignoredDomainRemoved:
        return u"ignored_domain_removed"_s;
    case TelemetryEventName::themeChanged:
        return u"theme_changed"_s;
    case TelemetryEventName::languageChanged:
        return u"language_changed"_s;
    }
    return {};
}
