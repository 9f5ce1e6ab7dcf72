#pragma once

#include "AppState.h"
#include "UpdateController.h"

#include <VelmoraMac/Shell/AppWindowPresenting.h>
#include <VelmoraMac/Shell/MenuPresenter.h>
#include <VelmoraMac/Shell/NotificationCenter.h>
#include <VelmoraMac/Shell/Panel.h>
#include <VelmoraMac/Shell/PopoverAnimationState.h>
#include <VelmoraMac/Telemetry/TelemetrySink.h>
#include <VelmoraPlatform/DelayedSteps.h>
#include <VelmoraPlatform/PointerMonitor.h>
#include <VelmoraPlatform/Screens.h>
#include <VelmoraPlatform/StatusItem.h>

#include <QImage>
#include <QObject>

#include <chrono>
#include <memory>
#include <optional>

// Controls the status item, the popover that a click on it opens, and its menu; icon and tooltip follow the
// state. Exists from the end of launch to the end of the process.
class StatusBarController : public QObject {
    Q_OBJECT

public:
    // All outlive the controller.
    struct Dependencies {
        StatusItem &statusItem;
        QImage templateImage;
        PanelFactory &panels;
        MenuPresenter &menus;
        PointerMonitor &pointer;
        const Screens &screens;
        Scheduler &scheduler;
        TelemetrySink &telemetry;
        NotificationCenter &notifications;
        std::function<void()> terminate;
    };

    StatusBarController(AppState &appState, UpdateController &updateController,
                        std::weak_ptr<AppWindowPresenting> windowPresenter, Dependencies dependencies);
    ~StatusBarController() override;

    // Opens the popover and gives it the keyboard; one that is open gets it.
    void showPopoverForKeyboard();

private:
    enum class Input { pointer, keyboard };

    void configureStatusItem();
    void observeState();
    template<typename Signal>
    void observe(Signal signal, void (StatusBarController::*reaction)());
    void autoCleanChanged();
    void lastCleanedAtChanged();
    void lastResultChanged();
    void restoreStatusItem();

    void updateStatusIcon();
    void updateStatusItemTooltip();
    void pulseStatusIcon();

    void togglePopover();
    void togglePopoverByKeys();
    void openPopover(Input input);
    [[nodiscard]] std::shared_ptr<Panel> makePopoverPanel(Input input);
    [[nodiscard]] bool showsPopover() const;
    [[nodiscard]] QSize popoverSize() const;
    [[nodiscard]] QRect popoverFrameFor(QSize size) const;
    void updatePopoverSize();
    void closePopover();
    void closePopoverAtOnce();
    void finishClosing(const std::shared_ptr<Panel> &panel);
    void blockStatusItemClicks(std::chrono::milliseconds time);
    void mousePressed(const PointerMonitor::Press &press);

    [[nodiscard]] QString t(const QString &english, const QString &german) const;
    void updateMenu();
    [[nodiscard]] StatusMenu contextMenu();
    void showContextMenu();
    void showAppWindow(AppTab tab);

    AppState &appState_;
    UpdateController &updateController_;
    std::weak_ptr<AppWindowPresenting> windowPresenter_;
    Dependencies dependencies_;
    PopoverAnimationState popoverAnimationState_;
    std::shared_ptr<Panel> popoverPanel_;
    std::optional<QRect> popoverAnchor_; // Where the icon was when the popover opened.
    bool statusItemClicksBlocked_ = false;
    bool isClosingPopover_ = false;
    DelayedSteps clickBlock_; // Only the latest block ends itself.
    DelayedSteps closing_;
    DelayedSteps pulse_;
};
