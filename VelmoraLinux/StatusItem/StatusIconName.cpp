#include "StatusIconName.h"

#include <QDir>
#include <QFile>
#include <QStringList>

#include <algorithm>
#include <array>
#include <cmath>

using namespace Qt::StringLiterals;

namespace {
// Active, paused, and the steps of their pulses, in percent. Each has its drawing.
constexpr std::array strengths{100, 86, 72, 59, 45, 38, 34, 30, 26, 22};
} // namespace

QString StatusIconName::of(const QString &identifier, double opacity)
{
    const auto distance = [opacity](int percent) { return std::abs(percent - 100 * opacity); };
    const int nearest = *std::min_element(strengths.begin(), strengths.end(), [&](int one, int other) {
        return distance(one) < distance(other);
    });
    return nearest == 100 ? identifier + u"-symbolic"_s : u"%1-%2-symbolic"_s.arg(identifier).arg(nearest);
}

bool StatusIconName::areColouredBy(const QString &desktopNames)
{
    const QStringList names = desktopNames.toUpper().split(u':');
    return names.contains(u"GNOME"_s) || names.contains(u"KDE"_s);
}

std::optional<QString> StatusIconName::folder(const QString &programFolder, const QString &identifier)
{
    const QString icons = QDir::cleanPath(programFolder + u"/../share/icons"_s);
    if (!QFile::exists(icons + u"/hicolor/symbolic/apps/"_s + of(identifier, 1) + u".svg"_s))
        return std::nullopt;
    return icons;
}
