#pragma once

#include <VelmoraMac/Shell/AppWindow.h>
#include <VelmoraMac/Shell/Panel.h>
#include <VelmoraPlatform/Appearance.h>
#include <VelmoraPlatform/DelayedSteps.h>
#include <VelmoraPlatform/Scheduler.h>
#include <VelmoraPlatform/Screens.h>
#include <VelmoraPlatform/WindowManager.h>

#include <QObject>
#include <QQmlEngine>
#include <QQuickView>

#include <memory>

// Deletes a view's window when nothing of it runs any more.
struct DeferredDelete {
    void operator()(QQuickView *window) const
    {
        window->hide();
        window->deleteLater();
    }
};

using QuickWindow = std::unique_ptr<QQuickView, DeferredDelete>;

// Shows views with Qt Quick. Everything that Qt Quick needs is made for the first view and given back a while
// after the last one is gone: an agent that only waits holds none of it.
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
    };

    explicit QuickViews(Dependencies dependencies);
    ~QuickViews() override;

    [[nodiscard]] std::unique_ptr<Panel> makePanel(const View &view, const PanelOptions &options) override;
    [[nodiscard]] std::unique_ptr<AppWindow> makeWindow(const View &view,
                                                        const AppWindowOptions &options) override;

    // Takes every view down at once. The last call: what the views show is about to go.
    void closeAll();

    // A window, not shown yet, whose root object is `view`.
    [[nodiscard]] QuickWindow load(const View &view);

    [[nodiscard]] const Dependencies &dependencies() const { return dependencies_; }

private:
    QQmlEngine &engine();
    void followAppearance();
    void forgetEngine();
    void viewGone(QQuickView *view);

    Dependencies dependencies_;
    std::unique_ptr<QQmlEngine> engine_;
    QList<QQuickView *> liveViews_;
    DelayedSteps rest_; // What follows the last view, unless another one is loaded by then.
};
