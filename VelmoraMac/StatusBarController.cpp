#include "StatusBarController.h"

#include <VelmoraMac/Shell/PopoverPlacement.h>
#include <VelmoraMac/Texts/LocalizedStrings.h>

using namespace Qt::StringLiterals;
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
} // namespace

StatusBarController::StatusBarController(AppState &appState, UpdateController &updateController,
                                         std::weak_ptr<AppWindowPresenting> windowPresenter,
                                         Dependencies dependencies)
    : appState_(appState)
    , updateController_(updateController)
    , windowPresenter_(std::move(windowPresenter))
    , dependencies_(std::move(dependencies))
    , clickBlock_(dependencies_.scheduler)
    , closing_(dependencies_.scheduler)
    , pulse_(dependencies_.scheduler)
{
    configureStatusItem();
    updateStatusIcon();
    updateMenu();
    observeState();
}

StatusBarController::~StatusBarController()
{
    dependencies_.pointer.stop();
    dependencies_.statusItem.setEvents({});
    dependencies_.statusItem.setMenu({});
}

QString StatusBarController::t(const QString &english, const QString &german) const
{
    return LocalizedStrings::choose(english, german, appState_.language());
}

void StatusBarController::configureStatusItem()
{
    dependencies_.statusItem.setEvents({
        [this] { togglePopover(); },
        [this] {
            closePopoverAtOnce();
            showContextMenu();
        },
        [this] { closePopoverAtOnce(); },
        [this] { togglePopoverByKeys(); },
    });
    dependencies_.statusItem.setToolTip(u"Velmora"_s);
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
    // The desktop may show the exported menu at any time: it is kept up to date.
    connect(&appState_, &AppState::autoCleanEnabledChanged, this, &StatusBarController::updateMenu);
    connect(&appState_, &AppState::launchAtLoginEnabledChanged, this, &StatusBarController::updateMenu);
    connect(&appState_, &AppState::languageChanged, this, &StatusBarController::updateMenu);
    connect(&dependencies_.notifications, &NotificationCenter::posted, this, [this](const QString &name) {
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
    dependencies_.statusItem.setVisible(true);
    configureStatusItem();
    updateStatusIcon();
    pulseStatusIcon();
}

void StatusBarController::updateStatusIcon()
{
    dependencies_.statusItem.setTemplateImage(dependencies_.templateImage, statusIconSize);
    dependencies_.statusItem.setOpacity(appState_.autoCleanEnabled() ? 1.0 : 0.38);
    updateStatusItemTooltip();
}

void StatusBarController::updateStatusItemTooltip()
{
    const QString separator = u" \u00b7 "_s;
    const QString state =
        appState_.autoCleanEnabled() ? t(u"Active"_s, u"Aktiv"_s) : t(u"Paused"_s, u"Pausiert"_s);
    const QString label = t(u"Links cleaned"_s, u"Links bereinigt"_s).toLower();
    dependencies_.statusItem.setToolTip(u"Velmora"_s + separator + state + separator +
                                        QString::number(appState_.totalCleaned()) + u' ' + label);
}

void StatusBarController::pulseStatusIcon()
{
    dependencies_.statusItem.fadeOpacity(appState_.autoCleanEnabled() ? 0.45 : 0.22, pulseTime);
    pulse_.after(pulseTime, [this] {
        if (dependencies_.statusItem.isVisible())
            updateStatusIcon();
    });
}

void StatusBarController::togglePopover()
{
    if (statusItemClicksBlocked_)
        return;
    if (showsPopover())
        closePopover();
    else
        openPopover(Input::pointer);
}

// Not blocked after an opening: keys do not bounce.
void StatusBarController::togglePopoverByKeys()
{
    if (showsPopover() && !isClosingPopover_)
        closePopover();
    else
        openPopover(Input::keyboard);
}

void StatusBarController::showPopoverForKeyboard()
{
    if (showsPopover() && !isClosingPopover_)
        popoverPanel_->takeKeyboard();
    else
        openPopover(Input::keyboard);
}

bool StatusBarController::showsPopover() const
{
    return popoverPanel_ && popoverPanel_->isVisible();
}

void StatusBarController::openPopover(Input input)
{
    isClosingPopover_ = false; // The panel that is closing is replaced below.
    blockStatusItemClicks(clicksBlockedAfterOpening);
    const auto panel = makePopoverPanel(input);
    popoverAnchor_ = dependencies_.statusItem.anchor();
    panel->setFrame(popoverFrameFor(popoverSize()), FrameChange::atOnce);
    if (popoverPanel_)
        popoverPanel_->orderOut();
    popoverPanel_ = panel;
    if (input == Input::keyboard)
        popoverPanel_->takeKeyboard();
    popoverPanel_->orderFront();
    dependencies_.telemetry.track(TelemetryEventName::menuPopoverOpened, appState_);
    dependencies_.pointer.start([this](const PointerMonitor::Press &press) { mousePressed(press); });
}

std::shared_ptr<Panel> StatusBarController::makePopoverPanel(Input input)
{
    const View view{QUrl(u"qrc:/qt/qml/VelmoraMac/PopoverView.qml"_s),
                    {{u"popoverAnimation"_s, QVariant::fromValue(&popoverAnimationState_)},
                     {u"takesKeyboard"_s, input == Input::keyboard}},
                    {{"openHistory", [this] {
                          closePopover();
                          showAppWindow(AppTab::history);
                      }}}};
    return dependencies_.panels.makePanel(view, {.size = popoverSize(),
                                                 .acceptsMouse = true,
                                                 .cornerRadius = popoverCornerRadius,
                                                 .cancelled = [this] { closePopover(); },
                                                 .takesKeyboard = input == Input::keyboard});
}

QSize StatusBarController::popoverSize() const
{
    return {popoverWidth, appState_.hasLastResult() ? popoverHeightWithResult : popoverHeight};
}

QRect StatusBarController::popoverFrameFor(QSize size) const
{
    if (popoverAnchor_)
        return popoverFrame(*popoverAnchor_, dependencies_.screens.workAreaAt(popoverAnchor_->center()),
                            size);
    const QRect area = dependencies_.screens.mainWorkArea();
    return popoverFrame(QRect(area.center().x(), area.top() - 1, 1, 1), area, size);
}

void StatusBarController::updatePopoverSize()
{
    if (!showsPopover() || isClosingPopover_)
        return;
    // The same place: the edge that faces the icon stays.
    popoverPanel_->setFrame(popoverFrameFor(popoverSize()), FrameChange::animated);
}

void StatusBarController::closePopover()
{
    if (!popoverPanel_) {
        dependencies_.pointer.stop();
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
        dependencies_.pointer.stop();
}

void StatusBarController::finishClosing(const std::shared_ptr<Panel> &panel)
{
    if (panel == popoverPanel_) {
        popoverPanel_->orderOut();
        popoverPanel_ = nullptr;
    }
    isClosingPopover_ = false;
    statusItemClicksBlocked_ = false;
    dependencies_.pointer.stop();
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
    if (!isInPopover && !dependencies_.statusItem.contains(press.position))
        closePopover();
}

void StatusBarController::updateMenu()
{
    dependencies_.statusItem.setMenu(contextMenu());
}

StatusMenu StatusBarController::contextMenu()
{
    using Check = StatusMenuEntry::Check;
    const StatusMenuEntry separator;
    StatusMenu menu;
    menu.push_back({appState_.autoCleanEnabled() ? t(u"Pause Cleaning"_s, u"Bereinigung pausieren"_s)
                                                 : t(u"Resume Cleaning"_s, u"Bereinigung fortsetzen"_s),
                    Check::none, [this] { appState_.setAutoCleanEnabled(!appState_.autoCleanEnabled()); }});
    menu.push_back({t(u"Start at Login"_s, u"Beim Login starten"_s),
                    appState_.launchAtLoginEnabled() ? Check::on : Check::off,
                    [this] { appState_.setLaunchAtLoginEnabled(!appState_.launchAtLoginEnabled()); }});
    menu.push_back(separator);
    menu.push_back({t(u"History"_s, u"Verlauf"_s), Check::none, [this] { showAppWindow(AppTab::history); }});
    menu.push_back(
        {t(u"Settings"_s, u"Einstellungen"_s), Check::none, [this] { showAppWindow(AppTab::general); }});
    if (updateController_.hasUpdater())
        menu.push_back({t(u"Check for Updates..."_s, u"Nach Updates suchen..."_s), Check::none,
                        [this] { updateController_.checkForUpdates(); }});
    menu.push_back(separator);
    menu.push_back({t(u"Quit Velmora"_s, u"Velmora beenden"_s), Check::none, dependencies_.terminate});
    return menu;
}

void StatusBarController::showContextMenu()
{
    const QRect area = dependencies_.screens.mainWorkArea();
    dependencies_.menus.popUp(contextMenu(),
                              dependencies_.statusItem.anchor().value_or(QRect(area.topRight(), QSize(1, 1))),
                              menuMinimumWidth);
}

void StatusBarController::showAppWindow(AppTab tab)
{
    if (const auto presenter = windowPresenter_.lock())
        presenter->showAppWindow(tab);
}
