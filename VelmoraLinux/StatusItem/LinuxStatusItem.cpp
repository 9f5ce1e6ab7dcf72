#include "LinuxStatusItem.h"

#include "StatusIconImage.h"
#include "StatusIconName.h"

#include <VelmoraLinux/Windows/NativeGeometry.h>

#include <QGuiApplication>
#include <QScreen>

#include <array>
#include <utility>

namespace {
constexpr std::array iconSizes{16, 22, 24, 32, 48};
constexpr int fadeSteps = 4;
constexpr int clickTolerance = 20; // Points around a click on the icon that count as the icon.
// Some hosts call AboutToShow after the registration, without the user having opened the menu.
constexpr qint64 hostProbeMs = 2000;

bool isWaylandSession()
{
    return qEnvironmentVariableIsSet("WAYLAND_DISPLAY");
}
} // namespace

LinuxStatusItem::LinuxStatusItem(const Dependencies &dependencies, const QString &id, const QString &title)
    : dependencies_(dependencies)
    , id_(id)
    , item_(dependencies.bus, id, title, DBusMenu::path())
    , menu_(dependencies.bus)
    , registration_(dependencies.bus)
    , embedded_(dependencies.xcb, title,
                [this](int pixels, const auto &ground) { return paint(pixels, ground); })
    , tip_(dependencies.appearance, [this] { return embeddedGeometry(); })
{
    item_.setIconFolder(dependencies_.iconFolder);
    connectHosts();
    fade_.callOnTimeout(this, &LinuxStatusItem::fadeStep);
    dependencies_.appearance.addChangeHandler([this] { showIcon(); });
    if (item_.exportItem() && menu_.exportMenu())
        registration_.start();
    else
        hostKnown_ = true; // No session bus: only the system tray remains.
    chooseHost();
}

void LinuxStatusItem::connectHosts()
{
    connect(&registration_, &StatusNotifierRegistration::registered, this,
            [this] { sinceRegistration_.start(); });
    connect(&registration_, &StatusNotifierRegistration::hostChanged, this, [this] {
        hostKnown_ = true;
        chooseHost();
        for (auto &done : std::exchange(hostBecameKnown_, {}))
            whenHostIsKnown(std::move(done));
    });
    connect(&item_, &StatusNotifierItem::activationTokenProvided, this,
            [this](const QByteArray &token) { dependencies_.activationToken.keep(token); });
    connect(&item_, &StatusNotifierItem::activated, this, [this](QPoint nativeHint) {
        sinceRegistration_.invalidate(); // From now on AboutToShow means that the user opens the menu.
        handleClick(nativeHint,
                    isKeyboardActivation(nativeHint) ? &Events::activatedByKeys : &Events::activated);
    });
    connect(&item_, &StatusNotifierItem::menuRequested, this,
            [this](QPoint nativeHint) { handleClick(nativeHint, &Events::menuRequested); });
    connect(&embedded_, &XEmbedIcon::activated, this, [this] {
        if (events_.activated)
            events_.activated();
    });
    connect(&embedded_, &XEmbedIcon::menuRequested, this, [this] {
        if (events_.menuRequested)
            events_.menuRequested();
    });
    connect(&embedded_, &XEmbedIcon::pointerEntered, &tip_, &StatusItemTip::pointerEntered);
    connect(&embedded_, &XEmbedIcon::pointerLeft, &tip_, &StatusItemTip::hide);
    connect(&menu_, &DBusMenu::opening, this, [this] {
        const bool isHostProbe = sinceRegistration_.isValid() && !sinceRegistration_.hasExpired(hostProbeMs);
        if (!isHostProbe && events_.menuAboutToShow)
            events_.menuAboutToShow();
    });
}

void LinuxStatusItem::handleClick(QPoint nativeHint, std::function<void()> Events::*event)
{
    const auto report = [this, event](const QRect &icon) {
        clickAnchor_ = icon;
        if (const auto handler = events_.*event)
            handler();
    };
    if (dependencies_.locateIcon)
        dependencies_.locateIcon(nativeHint, report);
    else
        report(anchorOfClick(nativeHint));
}

void LinuxStatusItem::chooseHost()
{
    embedded_.setShown(visible_ && hostKnown_ && !registration_.hasHost());
}

void LinuxStatusItem::whenHostIsKnown(std::function<void()> done)
{
    if (!hostKnown_)
        hostBecameKnown_.push_back(std::move(done));
    else
        QMetaObject::invokeMethod(this, done, Qt::QueuedConnection);
}

void LinuxStatusItem::setEvents(Events events)
{
    events_ = std::move(events);
}

void LinuxStatusItem::setTemplateImage(const QImage &image, QSize /*size: hosts choose the size*/)
{
    template_ = image;
    showIcon();
}

void LinuxStatusItem::setOpacity(double opacity)
{
    fade_.stop();
    if (opacity == opacity_)
        return;
    opacity_ = opacity;
    showIcon();
}

void LinuxStatusItem::fadeOpacity(double opacity, std::chrono::milliseconds duration)
{
    fadeTarget_ = opacity;
    fadeStepsLeft_ = fadeSteps;
    fade_.start(duration / fadeSteps);
    fadeStep();
}

void LinuxStatusItem::fadeStep()
{
    opacity_ += (fadeTarget_ - opacity_) / fadeStepsLeft_;
    if (--fadeStepsLeft_ == 0)
        fade_.stop();
    showIcon();
}

void LinuxStatusItem::setToolTip(const QString &text)
{
    item_.setToolTip(text);
    embedded_.setToolTip(text);
    tip_.setText(text);
}

void LinuxStatusItem::setVisible(bool visible)
{
    visible_ = visible;
    item_.setActive(visible);
    chooseHost();
}

void LinuxStatusItem::setMenu(StatusMenu menu)
{
    menu_.setMenu(std::move(menu));
}

void LinuxStatusItem::showIcon()
{
    if (template_.isNull())
        return;
    StatusNotifierPixmaps pixmaps;
    for (const int pixels : iconSizes)
        pixmaps << StatusNotifierPixmap::of(paint(pixels, std::nullopt));
    const bool hasName = !dependencies_.iconFolder.isEmpty();
    item_.setIcon(pixmaps, hasName ? StatusIconName::of(id_, opacity_) : QString());
    embedded_.repaint();
}

QImage LinuxStatusItem::paint(int pixels, const std::optional<QColor> &ground) const
{
    const bool isDark = ground ? isDarkGround(*ground)
                               : dependencies_.appearance.colorScheme() == Appearance::ColorScheme::dark;
    return paintStatusIcon(template_, pixels, isDark ? QColor(0xf2, 0xf2, 0xf2) : QColor(0x30, 0x30, 0x33),
                           opacity_, ground ? IconEdge::none : IconEdge::contrasting);
}

std::optional<QPoint> LinuxStatusItem::pointer() const
{
    // Under Wayland the X server's pointer position is that where the pointer last left an X window.
    if (dependencies_.xcb == nullptr || isWaylandSession())
        return {};
    const auto cookie = xcb_query_pointer(dependencies_.xcb->xcb(), dependencies_.xcb->root());
    const XcbReply<xcb_query_pointer_reply_t> reply(
        xcb_query_pointer_reply(dependencies_.xcb->xcb(), cookie, nullptr));
    if (!reply)
        return {};
    return toPoints(QPoint(reply->root_x, reply->root_y));
}

std::optional<ScreenFrame> LinuxStatusItem::screenFrame(const QScreen *screen) const
{
    if (screen == nullptr)
        return {};
    return ScreenFrame{screen->geometry(), dependencies_.screens.workAreaAt(screen->geometry().center())};
}

QRect LinuxStatusItem::anchorOfClick(QPoint nativeHint) const
{
    const QPoint hint = toPoints(nativeHint);
    const auto screenOfHint = screenFrame(QGuiApplication::screenAt(hint));
    std::optional<QPoint> click = pointer();
    const auto screenOfPointer = click ? screenFrame(QGuiApplication::screenAt(*click)) : std::nullopt;
    if (!isPointerOnIcon(screenOfPointer, click, screenOfHint, hint))
        click = isClickPosition(hint, screenOfHint) ? std::optional(hint) : click;
    const QScreen *screen = click ? QGuiApplication::screenAt(*click) : QGuiApplication::primaryScreen();
    const auto frame = screenFrame(screen);
    if (!frame)
        return {};
    return click ? anchorAround(*click, *frame) : fallbackAnchor(*frame);
}

bool LinuxStatusItem::isKeyboardActivation(QPoint nativeHint) const
{
    const std::optional<QPoint> click = pointer();
    if (!click)
        return false;
    const QPoint hint = toPoints(nativeHint);
    return !isPointerOnIcon(screenFrame(QGuiApplication::screenAt(*click)), click,
                            screenFrame(QGuiApplication::screenAt(hint)), hint);
}

std::optional<QRect> LinuxStatusItem::embeddedGeometry() const
{
    const auto native = embedded_.nativeGeometry();
    return native ? std::optional(toPoints(*native)) : std::nullopt;
}

std::optional<QRect> LinuxStatusItem::anchor() const
{
    const auto geometry = embeddedGeometry();
    return geometry ? geometry : clickAnchor_;
}

bool LinuxStatusItem::contains(QPoint point) const
{
    if (const auto geometry = embeddedGeometry())
        return geometry->contains(point);
    return clickAnchor_ &&
           clickAnchor_->adjusted(-clickTolerance, -clickTolerance, clickTolerance, clickTolerance)
               .contains(point);
}
