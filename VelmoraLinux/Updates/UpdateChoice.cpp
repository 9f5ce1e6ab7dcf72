#include "UpdateChoice.h"

#include "VersionOrder.h"

namespace {

constexpr int rolloutGroups = 7;

bool isBelow(QStringView version, QStringView limit)
{
    return compareVersions(version, limit) == std::weak_ordering::less;
}

bool suitsSystem(const AppcastItem &item, const UpdateHost &host)
{
    const bool tooOld = !item.minimumSystem.isEmpty() && isBelow(host.systemVersion, item.minimumSystem);
    const bool tooNew = !item.maximumSystem.isEmpty() && isBelow(item.maximumSystem, host.systemVersion);
    return !tooOld && !tooNew;
}

bool suitsHost(const AppcastEnclosure &enclosure, const UpdateHost &host)
{
    return enclosure.length > 0 && host.archiveTypes.contains(enclosure.type) &&
           (enclosure.system.isEmpty() || enclosure.system == host.system) &&
           (enclosure.architecture.isEmpty() || enclosure.architecture == host.architecture);
}

bool isCriticalFor(const AppcastItem &item, const UpdateHost &host)
{
    return item.critical && (item.criticalBelow.isEmpty() || isBelow(host.version, item.criticalBelow));
}

bool isInformationalFor(const AppcastItem &item, const UpdateHost &host)
{
    if (!item.informational)
        return false;
    if (item.informationalFor.isEmpty() && item.informationalBelow.isEmpty())
        return true;
    return item.informationalFor.contains(host.version) ||
           (!item.informationalBelow.isEmpty() && isBelow(host.version, item.informationalBelow));
}

bool isSkipped(const AppcastItem &item, const UpdateHost &host)
{
    if (host.skippedVersion.isEmpty() || isCriticalFor(item, host) ||
        isBelow(host.skippedVersion, item.version))
        return false;
    return item.ignoreSkippedBelow.isEmpty() || !isBelow(host.skippedVersion, item.ignoreSkippedBelow);
}

bool hasReachedGroup(const AppcastItem &item, const UpdateHost &host)
{
    if (item.phasedInterval == 0 || !item.published.isValid() || isCriticalFor(item, host))
        return true;
    const qint64 interval = std::min<qint64>(item.phasedInterval, 366LL * 24 * 3600);
    return item.published.addSecs(interval * (host.rolloutGroup % rolloutGroups)) <= host.now;
}

// The item reduced to its first enclosure that fits; nothing when none fits.
std::optional<AppcastItem> fitted(const AppcastItem &item, const UpdateHost &host)
{
    if (!item.channel.isEmpty())
        return std::nullopt;
    AppcastItem result = item;
    result.enclosures.removeIf(
        [&host](const AppcastEnclosure &enclosure) { return !suitsHost(enclosure, host); });
    if (result.enclosures.isEmpty() && !isInformationalFor(item, host))
        return std::nullopt;
    result.enclosures = result.enclosures.first(std::min<qsizetype>(1, result.enclosures.size()));
    return result;
}

} // namespace

UpdateChoice chooseUpdate(const Appcast &appcast, const UpdateHost &host, CheckKind kind)
{
    UpdateChoice choice;
    for (const AppcastItem &candidate : appcast) {
        const std::optional<AppcastItem> item = fitted(candidate, host);
        if (!item || !isBelow(host.version, item->version))
            continue;
        if (!suitsSystem(*item, host)) {
            choice.otherSystemOnly = true;
            continue;
        }
        if (kind == CheckKind::scheduled && (isSkipped(*item, host) || !hasReachedGroup(*item, host)))
            continue;
        if (!choice.item || isBelow(choice.item->version, item->version))
            choice.item = item;
    }
    if (choice.item) {
        choice.otherSystemOnly = false;
        choice.critical = isCriticalFor(*choice.item, host);
        choice.informational = isInformationalFor(*choice.item, host);
    }
    return choice;
}
