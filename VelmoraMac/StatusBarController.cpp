#include "StatusBarController.h"

#include <VelmoraMac/Shell/PopoverPlacement.h>
#include <VelmoraMac/Texts/LocalizedStrings.h>

using namespace std::chrono_literals;

namespace {
constexpr int popoverWidth = 306;
constexpr int popoverHeight = 386;
constexpr int popoverHeightWithResult = 536;
constexpr int popoverCornerRadius = 30;
constexpr QSize statusIconSize(17, 17);
constexpr int menuMinimumWidth = 180;

constexpr auto clicksBlockedAfterOpening = 360ms;
constexpr auto clicksBlockedWhileClosing = 270ms;
constexpr auto closingTime = 250ms;
constexpr auto pulseTime = 160ms;

QString text(const char *english, const char *german, AppLanguage language)
{
    return LocalizedStrings::choose(QString::fromUtf8(english), QString::fromUtf8(german), language);
}
} // namespace

StatusBarController::StatusBarController(AppState &appState, UpdateController &updateController,
                                         std::weak_ptr<AppWindowPresenting> windowPresenter, Surface surface)
    : appState_(appState)
    , updateController_(updateController)
    , windowPresenter_(std::move(windowPresenter))
    , surface_(std::move(surface))
    , clickBlock_(surface_.scheduler)
    , closing_(surface_.scheduler)
    , pulse_(surface_.scheduler)
{
    configureStatusItem();
    updateStatusIcon();
    updateMenu();
    observeState();
}

StatusBarController::~StatusBarController()
{
    surface_.pointer.stop();
    surface_.statusItem.setEvents({});
    surface_.statusItem.setMenu({});
}

void StatusBarController::configureStatusItem()
{
    surface_.statusItem.setEvents({
        [this] { togglePopover(); },
        [this] {
            closePopoverAtOnce();
            showContextMenu();
        },
        [this] { closePopoverAtOnce(); },
    });
    surface_.statusItem.setToolTip(QStringLiteral("Velmora"));
}

// Runs `reaction` now and on every change.
template<typename Signal>
void StatusBarController::observe(Signal signal, void (StatusBarController::*reaction)())
{
    connect(&appState_, signal, this, reaction);
    (this->*reaction)();
}

void StatusBarController::observeState()
{
    observe(&AppState::autoCleanEnabledChanged, &StatusBarController::autoCleanChanged);
    observe(&AppState::launchAtLoginEnabledChanged, &StatusBarController::updateStatusItemTooltip);
    observe(&AppState::lastCleanedAtChanged, &StatusBarController::lastCleanedAtChanged);
    observe(&AppState::lastResultChanged, &StatusBarController::lastResultChanged);
    observe(&AppState::totalCleanedChanged, &StatusBarController::updateStatusItemTooltip);
    observe(&AppState::languageChanged, &StatusBarController::updateStatusItemTooltip);
    // The desktop may show the exported menu at any time, so it follows what it says.
    connect(&appState_, &AppState::autoCleanEnabledChanged, this, &StatusBarController::updateMenu);
    connect(&appState_, &AppState::launchAtLoginEnabledChanged, this, &StatusBarController::updateMenu);
    connect(&appState_, &AppState::languageChanged, this, &StatusBarController::updateMenu);
    connect(&surface_.notifications, &NotificationCenter::posted, this, [this](const QString &name) {
        if (name == NotificationCenter::restoreMenuBarIcon())
            restoreStatusItem();
    });
}

void StatusBarController::autoCleanChanged()
{
    updateStatusIcon();
    updateStatusItemTooltip();
}

void StatusBarController::lastCleanedAtChanged()
{
    if (!appState_.lastCleanedAt().isValid())
        return;
    pulseStatusIcon();
    updateStatusItemTooltip();
}

void StatusBarController::lastResultChanged()
{
    updatePopoverSize();
    updateStatusItemTooltip();
}

void StatusBarController::restoreStatusItem()
{
    surface_.statusItem.setVisible(true);
    configureStatusItem();
    updateStatusIcon();
    pulseStatusIcon();
}

void StatusBarController::updateStatusIcon()
{
    surface_.statusItem.setTemplateImage(surface_.templateImage, statusIconSize);
    surface_.statusItem.setOpacity(appState_.autoCleanEnabled() ? 1.0 : 0.38);
    updateStatusItemTooltip();
}

void StatusBarController::updateStatusItemTooltip()
{
    const AppLanguage language = appState_.language();
    const QString separator = QStringLiteral(" \u00b7 ");
    const QString state = appState_.autoCleanEnabled() ? text("Active", "Aktiv", language)
                                                       : text("Paused", "Pausiert", language);
    const QString label = text("Links cleaned", "Links bereinigt", language).toLower();
    surface_.statusItem.setToolTip(QStringLiteral("Velmora") + separator + state + separator +
                                   QString::number(appState_.totalCleaned()) + QLatin1Char(' ') + label);
}

void StatusBarController::pulseStatusIcon()
{
    surface_.statusItem.fadeOpacity(appState_.autoCleanEnabled() ? 0.45 : 0.22, pulseTime);
    pulse_.after(pulseTime, [this] {
        if (surface_.statusItem.isVisible())
            updateStatusIcon();
    });
}

void StatusBarController::togglePopover()
{
    if (statusItemClicksBlocked_)
        return;
    if (popoverPanel_ && popoverPanel_->isVisible())
        closePopover();
    else
        openPopover();
}

void StatusBarController::openPopover()
{
    blockStatusItemClicks(clicksBlockedAfterOpening);
    const auto panel = makePopoverPanel();
    panel->setFrame(popoverFrameFor(popoverSize()), FrameChange::atOnce);
    if (popoverPanel_)
        popoverPanel_->orderOut();
    popoverPanel_ = panel;
    popoverPanel_->orderFront();
    surface_.telemetry.track(TelemetryEventName::menuPopoverOpened, appState_);
    surface_.pointer.start([this](const PointerMonitor::Press &press) { mousePressed(press); });
}

std::shared_ptr<Panel> StatusBarController::makePopoverPanel()
{
    const View view{QUrl(QStringLiteral("qrc:/qt/qml/VelmoraMac/PopoverView.qml")),
                    {{QStringLiteral("appState"), QVariant::fromValue(&appState_)},
                     {QStringLiteral("popoverAnimation"), QVariant::fromValue(&popoverAnimationState_)}},
                    {{"openHistory", [this] {
                          closePopover();
                          showAppWindow(AppTab::history);
                      }}}};
    return surface_.panels.makePanel(view,
                                     {popoverSize(), true, popoverCornerRadius, [this] { closePopover(); }});
}

QSize StatusBarController::popoverSize() const
{
    return {popoverWidth, appState_.hasLastResult() ? popoverHeightWithResult : popoverHeight};
}

QRect StatusBarController::popoverFrameFor(QSize size) const
{
    const auto anchor = surface_.statusItem.anchor();
    if (anchor)
        return popoverFrame(*anchor, surface_.screens.workAreaAt(anchor->center()), size);
    const QRect area = surface_.screens.mainWorkArea();
    return popoverFrame(QRect(area.center().x(), area.top() - 1, 1, 1), area, size);
}

void StatusBarController::updatePopoverSize()
{
    if (!popoverPanel_ || !popoverPanel_->isVisible() || isClosingPopover_)
        return;
    const QRect old = popoverPanel_->frame();
    QRect frame(QPoint(), popoverSize());
    frame.moveCenter(old.center());
    frame.moveTop(old.top());
    popoverPanel_->setFrame(frame, FrameChange::animated);
}

void StatusBarController::closePopover()
{
    if (!popoverPanel_) {
        surface_.pointer.stop();
        return;
    }
    if (isClosingPopover_)
        return;
    isClosingPopover_ = true;
    blockStatusItemClicks(clicksBlockedWhileClosing);
    popoverAnimationState_.requestClose();
    closing_.after(closingTime, [this, panel = std::weak_ptr(popoverPanel_)] {
        if (const auto open = panel.lock())
            finishClosing(open);
    });
}

void StatusBarController::closePopoverAtOnce()
{
    if (popoverPanel_)
        finishClosing(popoverPanel_);
    else
        surface_.pointer.stop();
}

void StatusBarController::finishClosing(const std::shared_ptr<Panel> &panel)
{
    if (panel == popoverPanel_) {
        popoverPanel_->orderOut();
        popoverPanel_ = nullptr;
    }
    isClosingPopover_ = false;
    statusItemClicksBlocked_ = false;
    surface_.pointer.stop();
}

void StatusBarController::blockStatusItemClicks(std::chrono::milliseconds time)
{
    clickBlock_.startOver();
    statusItemClicksBlocked_ = true;
    clickBlock_.after(time, [this] { statusItemClicksBlocked_ = false; });
}

void StatusBarController::mousePressed(const PointerMonitor::Press &press)
{
    const bool isInPopover = popoverPanel_ && press.window == popoverPanel_->windowId();
    if (!isInPopover && !surface_.statusItem.contains(press.position))
        closePopover();
}

void StatusBarController::updateMenu()
{
    surface_.statusItem.setMenu(contextMenu());
}

StatusMenu StatusBarController::contextMenu()
{
    using Check = StatusMenuEntry::Check;
    const AppLanguage language = appState_.language();
    const StatusMenuEntry separator;
    StatusMenu menu;
    menu.push_back({appState_.autoCleanEnabled()
                        ? text("Pause Cleaning", "Bereinigung pausieren", language)
                        : text("Resume Cleaning", "Bereinigung fortsetzen", language),
                    Check::none, [this] { appState_.setAutoCleanEnabled(!appState_.autoCleanEnabled()); }});
    menu.push_back({text("Start at Login", "Beim Login starten", language),
                    appState_.launchAtLoginEnabled() ? Check::on : Check::off,
                    [this] { appState_.setLaunchAtLoginEnabled(!appState_.launchAtLoginEnabled()); }});
    menu.push_back(separator);
    menu.push_back(
        {text("History", "Verlauf", language), Check::none, [this] { showAppWindow(AppTab::history); }});
    menu.push_back({text("Settings", "Einstellungen", language), Check::none,
                    [this] { showAppWindow(AppTab::general); }});
    if (updateController_.hasUpdater())
        menu.push_back({text("Check for Updates...", "Nach Updates suchen...", language), Check::none,
                        [this] { updateController_.checkForUpdates(); }});
    menu.push_back(separator);
    menu.push_back({text("Quit Velmora", "Velmora beenden", language), Check::none, surface_.terminate});
    return menu;
}

void StatusBarController::showContextMenu()
{
    const QRect area = surface_.screens.mainWorkArea();
    surface_.menus.popUp(contextMenu(),
                         surface_.statusItem.anchor().value_or(QRect(area.topRight(), QSize(1, 1))),
                         menuMinimumWidth);
}

void StatusBarController::showAppWindow(AppTab tab)
{
    if (const auto presenter = windowPresenter_.lock())
        presenter->showAppWindow(tab);
}
