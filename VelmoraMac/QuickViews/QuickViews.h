#pragma once

#include "OffscreenView.h"

#include <VelmoraMac/Shell/AppWindow.h>
#include <VelmoraMac/Shell/Panel.h>
#include <VelmoraPlatform/Appearance.h>
#include <VelmoraPlatform/DelayedSteps.h>
#include <VelmoraPlatform/PanelSurfaces.h>
#include <VelmoraPlatform/Scheduler.h>
#include <VelmoraPlatform/Screens.h>
#include <VelmoraPlatform/WindowManager.h>

#include <QObject>
#include <QQmlEngine>
#include <QQuickView>

#include <functional>
#include <map>
#include <memory>

class AppState;

// Deletes a view later: a handler of the view may still be running.
struct DeferredDelete {
    void operator()(QQuickView *window) const
    {
        window->hide();
        window->deleteLater();
    }

    void operator()(OffscreenView *view) const { view->deleteLater(); }
};

using QuickWindow = std::unique_ptr<QQuickView, DeferredDelete>;
using OffscreenPicture = std::unique_ptr<OffscreenView, DeferredDelete>;

// Shows views with Qt Quick. The engine is created for the first view and destroyed a while after the last one
// is gone, so that a waiting agent needs no memory for it. The settings window is kept when it is closed, and the
// engine with it; what drawing needed is given back then, too.
class QuickViews : public QObject, public PanelFactory, public AppWindowFactory {
    Q_OBJECT

public:
    // All outlive this object.
    struct Dependencies {
        WindowManager &windows;
        const Screens &screens;
        Scheduler &scheduler;
        Appearance &appearance;
        std::function<void()> releaseMemory;
        PanelSurfaces *surfaces = nullptr; // Null where panels are always windows.
    };

    explicit QuickViews(Dependencies dependencies);
    ~QuickViews() override;

    [[nodiscard]] std::unique_ptr<Panel> makePanel(const View &view, const PanelOptions &options) override;
    [[nodiscard]] std::unique_ptr<AppWindow> makeWindow(const View &view,
                                                        const AppWindowOptions &options) override;

    // What the views show. Before the first of them is made; `state` outlives the views.
    void setAppState(AppState &state) { state_ = &state; }

    // Closes every view at once. The last call: the state that the views show is destroyed next.
    void closeAll();

    // A window, not shown yet, whose root object is `view`.
    [[nodiscard]] QuickWindow load(const View &view);

    // The same, drawn off screen.
    [[nodiscard]] OffscreenPicture loadOffscreen(const View &view);

    [[nodiscard]] const Dependencies &dependencies() const { return dependencies_; }

private:
    struct LiveView {
        std::function<void()> close; // At once, while others still have it.
        bool isHidden = false;       // It has been on screen, and will be again.
    };

    QQmlEngine &engine();
    void followDesktop();
    void forgetEngine();
    void keepWhile(QObject &view, std::function<void()> close);
    void setHidden(const QObject &view, bool isHidden);
    void viewDestroyed(const QObject *view);
    void releaseWhenIdle();

    Dependencies dependencies_;
    AppState *state_ = nullptr;
    std::unique_ptr<QQmlEngine> engine_;
    std::map<const QObject *, LiveView> liveViews_;
    DelayedSteps idle_; // Releases memory after the last view, unless another one is loaded or shown by then.
};
