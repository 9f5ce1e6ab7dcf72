#include "UpdateController.h"

#include <VelmoraMac/Texts/LocalizedStrings.h>

using namespace Qt::StringLiterals;

namespace {

// Nothing unless `value` is text that parses as an address. A relative one parses: the updater decides
// what can be fetched.
std::optional<QUrl> feedAddress(const QJsonValue &value)
{
    const QString text = value.toString();
    // QUrl accepts white space around an address; here that is no address.
    if (!value.isString() || text.isEmpty() || text.front().isSpace() || text.back().isSpace())
        return std::nullopt;
    const QUrl url(text, QUrl::TolerantMode);
    return url.isValid() ? std::optional(url) : std::nullopt;
}

std::optional<UpdateConfiguration> sparkleConfiguration(const BundleInfo &bundle)
{
    const std::optional<QUrl> feed = feedAddress(bundle.value(u"SUFeedURL"));
    const QJsonValue key = bundle.value(u"SUPublicEDKey");
    if (!feed || !key.isString() || key.toString().trimmed().isEmpty())
        return std::nullopt;
    return UpdateConfiguration{*feed, key.toString()};
}

} // namespace

UpdateController::UpdateController(const BundleInfo &bundle, const MakeUpdater &makeUpdater, QObject *parent)
    : QObject(parent)
{
    const std::optional<UpdateConfiguration> configuration = sparkleConfiguration(bundle);
    if (!configuration)
        return;
    updaterController_ = makeUpdater(*configuration);
    if (updaterController_)
        updaterController_->setChangeHandler([this] { Q_EMIT canCheckForUpdatesChanged(); });
}

bool UpdateController::canCheckForUpdates() const
{
    return updaterController_ && updaterController_->canCheckForUpdates();
}

void UpdateController::checkForUpdates()
{
    if (updaterController_)
        updaterController_->checkForUpdates();
}

QString UpdateController::statusText(AppLanguage language) const
{
    if (hasUpdater()) {
        return LocalizedStrings::choose(
            u"Automatic updates are ready for signed release builds."_s,
            u"Automatische Updates sind für signierte Release-Builds vorbereitet."_s, language);
    }
    return LocalizedStrings::choose(
        u"Automatic updates will be enabled after signing keys and the appcast are configured."_s,
        u"Automatische Updates werden aktiviert, sobald Signier-Key und Appcast eingerichtet sind."_s,
        language);
}
