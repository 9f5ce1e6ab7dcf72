#include "UpdateTexts.h"

#include "LocalizedStrings.h"

#include <QLocale>

using namespace Qt::StringLiterals;

namespace {

// Writes the texts of one report in one language.
class Writer {
public:
    Writer(const UpdateReport &report, AppLanguage language)
        : report_(report)
        , language_(language)
    {
    }

    [[nodiscard]] UpdateTexts texts() const
    {
        switch (report_.step) {
        case UpdateStep::permission:
            return permission();
        case UpdateStep::checking:
            return {.headline = t(u"Looking for updates…"_s, u"Suche nach Updates …"_s),
                    .message = {},
                    .accept = {},
                    .dismiss = cancel(),
                    .skip = {}};
        case UpdateStep::upToDate:
            return upToDate();
        case UpdateStep::found:
            return found();
        case UpdateStep::downloading:
            return downloading();
        case UpdateStep::verifying:
            return working(t(u"Checking the download…"_s, u"Download wird geprüft …"_s));
        case UpdateStep::ready:
            return ready();
        case UpdateStep::installing:
            return working(t(u"Installing…"_s, u"Wird installiert …"_s));
        case UpdateStep::managed:
            return managed();
        case UpdateStep::failed:
            return failed();
        }
        return {};
    }

private:
    [[nodiscard]] QString t(const QString &english, const QString &german) const
    {
        return LocalizedStrings::choose(english, german, language_);
    }

    [[nodiscard]] QString cancel() const { return t(u"Cancel"_s, u"Abbrechen"_s); }

    [[nodiscard]] QString ok() const { return t(u"OK"_s, u"OK"_s); }

    [[nodiscard]] UpdateTexts permission() const
    {
        return {
            .headline = t(u"Look for updates automatically?"_s, u"Automatisch nach Updates suchen?"_s),
            .message = t(
                u"Velmora can ask its website once a day whether there is a new version. Nothing is installed without your consent, and you can look for updates yourself at any time."_s,
                u"Velmora kann einmal am Tag auf seiner Website nachsehen, ob es eine neue Version gibt. Nichts wird ohne deine Zustimmung installiert, und du kannst jederzeit selbst nach Updates suchen."_s),
            .accept = t(u"Check Automatically"_s, u"Automatisch suchen"_s),
            .dismiss = t(u"Don’t Check"_s, u"Nicht suchen"_s),
            .skip = {}};
    }

    [[nodiscard]] UpdateTexts upToDate() const
    {
        UpdateTexts result;
        result.headline = t(u"Velmora is up to date"_s, u"Velmora ist auf dem neuesten Stand"_s);
        result.message =
            report_.otherSystemOnly
                ? t(u"There is a newer version, but it does not run on this system. You have %1."_s,
                    u"Es gibt eine neuere Version, die auf diesem System aber nicht läuft. Du hast %1."_s)
                : t(u"Version %1 is the newest one."_s, u"Version %1 ist die neueste."_s);
        result.message = result.message.arg(report_.ownVersion);
        result.accept = ok();
        return result;
    }

    [[nodiscard]] UpdateTexts found() const
    {
        const bool isNews = !report_.page.isEmpty();
        UpdateTexts result;
        result.headline = t(u"Velmora %1 is here"_s, u"Velmora %1 ist da"_s).arg(report_.version);
        result.message = isNews ? t(u"You have version %1. This one is not installed from here."_s,
                                    u"Du hast Version %1. Diese wird nicht von hier aus installiert."_s)
                                : t(u"You have version %1. Download the new one now?"_s,
                                    u"Du hast Version %1. Die neue jetzt laden?"_s);
        result.message = result.message.arg(report_.ownVersion);
        result.accept =
            isNews ? t(u"Learn More…"_s, u"Mehr erfahren …"_s) : t(u"Install Update"_s, u"Installieren"_s);
        if (report_.mayBePutOff) {
            result.dismiss = t(u"Remind Me Later"_s, u"Später erinnern"_s);
            result.skip = t(u"Skip This Version"_s, u"Diese Version überspringen"_s);
        }
        return result;
    }

    [[nodiscard]] UpdateTexts downloading() const
    {
        const QLocale locale(language_ == AppLanguage::german ? QLocale::German : QLocale::English);
        return {.headline = t(u"Loading Velmora %1…"_s, u"Velmora %1 wird geladen …"_s).arg(report_.version),
                .message = t(u"%1 of %2"_s, u"%1 von %2"_s)
                               .arg(locale.formattedDataSize(report_.received, 1, QLocale::DataSizeSIFormat),
                                    locale.formattedDataSize(report_.total, 1, QLocale::DataSizeSIFormat)),
                .accept = {},
                .dismiss = cancel(),
                .skip = {}};
    }

    [[nodiscard]] UpdateTexts ready() const
    {
        return {
            .headline = t(u"Velmora %1 is ready"_s, u"Velmora %1 ist bereit"_s).arg(report_.version),
            .message = t(
                u"The download is complete and its signature is right. Velmora restarts to install it."_s,
                u"Der Download ist vollständig, die Signatur stimmt. Zum Installieren startet Velmora neu."_s),
            .accept = t(u"Install and Relaunch"_s, u"Installieren und neu starten"_s),
            .dismiss = t(u"Later"_s, u"Später"_s),
            .skip = {}};
    }

    [[nodiscard]] UpdateTexts managed() const
    {
        if (report_.problem)
            return {.headline = t(u"This copy cannot update itself"_s,
                                  u"Diese Installation kann sich nicht selbst aktualisieren"_s),
                    .message = problem(),
                    .accept = ok(),
                    .dismiss = {},
                    .skip = {}};
        return {.headline = t(u"Updates come from elsewhere"_s, u"Updates kommen von anderer Stelle"_s),
                .message = t(u"This copy of Velmora is kept up to date by whoever installed it: %1."_s,
                             u"Diese Installation von Velmora wird dort aktualisiert, wo sie herkommt: %1."_s)
                               .arg(report_.manager),
                .accept = ok(),
                .dismiss = {},
                .skip = {}};
    }

    [[nodiscard]] UpdateTexts failed() const
    {
        return {.headline = t(u"Updating did not work"_s, u"Das Update hat nicht geklappt"_s),
                .message = problem() + u' ' +
                           t(u"The installed version is unchanged."_s,
                             u"Die installierte Version ist unverändert."_s),
                .accept = ok(),
                .dismiss = {},
                .skip = {}};
    }

    [[nodiscard]] static UpdateTexts working(const QString &headline)
    {
        UpdateTexts result;
        result.headline = headline;
        return result;
    }

    [[nodiscard]] QString problem() const
    {
        if (!report_.problem)
            return {};
        switch (*report_.problem) {
        case UpdateProblem::insecure:
            return t(u"The update is not offered over a secure connection."_s,
                     u"Das Update wird nicht über eine sichere Verbindung angeboten."_s);
        case UpdateProblem::unreachable:
            return t(u"The update server could not be reached. Please try again later."_s,
                     u"Der Update-Server war nicht erreichbar. Bitte versuche es später noch einmal."_s);
        case UpdateProblem::feedDamaged:
            return t(u"The list of updates could not be understood."_s,
                     u"Die Liste der Updates war nicht zu verstehen."_s);
        case UpdateProblem::tooLarge:
            return t(u"The server sent more than it may."_s, u"Der Server hat mehr geschickt als erlaubt."_s);
        case UpdateProblem::noSpace:
            return t(u"There is not enough space on the disk."_s,
                     u"Auf dem Datenträger ist nicht genug Platz."_s);
        case UpdateProblem::badSignature:
            return t(u"The download is not properly signed and was thrown away."_s,
                     u"Der Download ist nicht richtig signiert und wurde verworfen."_s);
        case UpdateProblem::contents:
            return t(u"The download does not hold what was announced and was thrown away."_s,
                     u"Der Download enthält nicht, was angekündigt war, und wurde verworfen."_s);
        case UpdateProblem::notReplaced:
            return t(u"The installed files could not be replaced."_s,
                     u"Die installierten Dateien ließen sich nicht ersetzen."_s);
        case UpdateProblem::notStarted:
            return t(u"The new version did not start, so it was taken out again."_s,
                     u"Die neue Version ist nicht gestartet und wurde wieder entfernt."_s);
        case UpdateProblem::badKey:
            return t(
                u"This copy cannot verify updates: its key is damaged. Please contact the developer."_s,
                u"Diese Installation kann Updates nicht prüfen: Ihr Schlüssel ist beschädigt. Bitte wende dich an den Entwickler."_s);
        case UpdateProblem::sharedFolder:
        case UpdateProblem::foreignFile:
            return obstacle().arg(report_.place);
        }
        return {};
    }

    // What the user has to change before this copy can update itself; %1 is the place.
    [[nodiscard]] QString obstacle() const
    {
        return report_.problem == UpdateProblem::sharedFolder
                   ? t(u"Other users can write to the folder “%1”, so nothing is installed there. Move Velmora to a folder of your own."_s,
                       u"In den Ordner „%1“ können auch andere schreiben, deshalb wird dort nichts installiert. Lege Velmora in einen eigenen Ordner."_s)
                   : t(u"Velmora’s folder contains “%1”, which does not belong to it. Move that file elsewhere and try again."_s,
                       u"In Velmoras Ordner liegt „%1“, das nicht dazugehört. Verschiebe diese Datei und versuche es noch einmal."_s);
    }

    const UpdateReport &report_;
    AppLanguage language_;
};

} // namespace

UpdateTexts updateTexts(const UpdateReport &report, AppLanguage language)
{
    return Writer(report, language).texts();
}
