#include "DesktopAppearance.h"

#include <QDBusArgument>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QEvent>
#include <QGuiApplication>
#include <QPalette>

#include <algorithm>
#include <array>

using namespace Qt::StringLiterals;

namespace {
const QString portalService = u"org.freedesktop.portal.Desktop"_s;
const QString portalPath = u"/org/freedesktop/portal/desktop"_s;
const QString settingsInterface = u"org.freedesktop.portal.Settings"_s;
const QString appearanceGroup = u"org.freedesktop.appearance"_s;
} // namespace

DesktopAppearance::DesktopAppearance(QDBusConnection bus)
    : bus_(std::move(bus))
{
    // A slot whose argument types are unknown to Qt by name cannot be connected, and Qt makes this one known only
    // when it has sent or received one.
    qRegisterMetaType<QDBusVariant>("QDBusVariant");
    // Without a service name: with one, Qt would block until the bus has resolved it.
    bus_.connect({}, portalPath, settingsInterface, u"SettingChanged"_s, this,
                 SLOT(settingChanged(QString, QString, QDBusVariant)));
    qGuiApp->installEventFilter(this);
    readPortal();
}

Appearance::ColorScheme DesktopAppearance::colorScheme() const
{
    if (portalScheme_)
        return *portalScheme_;
    const QPalette palette = QGuiApplication::palette();
    const bool isDark = palette.windowText().color().lightnessF() > palette.window().color().lightnessF();
    return isDark ? ColorScheme::dark : ColorScheme::light;
}

bool DesktopAppearance::increasesContrast() const
{
    if (portalContrast_)
        return *portalContrast_;
    const QPalette palette = QGuiApplication::palette();
    const std::array colors{palette.windowText().color().rgb(), palette.window().color().rgb()};
    const auto isExtreme = [](QRgb color) { return color == qRgb(0, 0, 0) || color == qRgb(255, 255, 255); };
    return colors[0] != colors[1] && std::all_of(colors.begin(), colors.end(), isExtreme);
}

void DesktopAppearance::addChangeHandler(ChangeHandler handler)
{
    handlers_.push_back(std::move(handler));
}

void DesktopAppearance::readPortal()
{
    auto call = QDBusMessage::createMethodCall(portalService, portalPath, settingsInterface, u"ReadAll"_s);
    call << QStringList{appearanceGroup};
    auto *pending = new QDBusPendingCallWatcher(bus_.asyncCall(call), this);
    connect(pending, &QDBusPendingCallWatcher::finished, this, [this, pending] {
        pending->deleteLater();
        if (pending->isError() || pending->reply().arguments().isEmpty())
            return; // No portal: the palette decides.
        const auto groups = qdbus_cast<QMap<QString, QVariantMap>>(
            pending->reply().arguments().constFirst().value<QDBusArgument>());
        bool changed = false;
        const QVariantMap settings = groups.value(appearanceGroup);
        for (auto setting = settings.begin(); setting != settings.end(); ++setting)
            changed |= applySetting(setting.key(), setting.value());
        if (changed)
            notifyHandlers();
    });
}

void DesktopAppearance::settingChanged(const QString &group, const QString &key, const QDBusVariant &value)
{
    if (group == appearanceGroup && applySetting(key, value.variant()))
        notifyHandlers();
}

bool DesktopAppearance::applySetting(const QString &key, const QVariant &value)
{
    if (key == "color-scheme"_L1) { // 0: no preference, 1: dark, 2: light.
        const uint scheme = value.toUInt();
        portalScheme_.reset();
        if (scheme == 1)
            portalScheme_ = ColorScheme::dark;
        else if (scheme == 2)
            portalScheme_ = ColorScheme::light;
        return true;
    }
    if (key == "contrast"_L1) { // 0: no preference, 1: higher.
        portalContrast_ = value.toUInt() == 1;
        return true;
    }
    if (key == "reduced-motion"_L1) {
        reducesMotion_ = value.toUInt() == 1;
        return true;
    }
    return false;
}

bool DesktopAppearance::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::ApplicationPaletteChange && watched == qGuiApp)
        notifyHandlers();
    return QObject::eventFilter(watched, event);
}

void DesktopAppearance::notifyHandlers()
{
    for (const ChangeHandler &handler : handlers_)
        handler();
}
