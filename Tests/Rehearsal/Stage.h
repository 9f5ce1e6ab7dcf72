#pragma once

#include <VelmoraMac/AppState.h>
#include <VelmoraMac/Motion/AnimationClock.h>
#include <VelmoraMac/Shell/NotificationCenter.h>
#include <VelmoraMac/Shell/PopoverAnimationState.h>
#include <VelmoraMac/StyleKit/Surroundings.h>
#include <VelmoraMac/UpdateController.h>
#include <VelmoraMac/Updates/UpdateWindow.h>

#include <QImage>
#include <QQmlEngine>
#include <QQuickItem>
#include <QQuickView>

#include <Fakes/FakeAppWindows.h>
#include <Fakes/FakeServices.h>

#include <chrono>
#include <memory>

// How the views of a stage shall look.
struct StageSetup {
    VelmoraTheme theme = VelmoraTheme::graphite;
    AppLanguage language = AppLanguage::english;
    bool darkAppearance = false;
    bool reducedMotion = false;
    int links = 0; // Cleanings in the past; they fill the counters.
    int trackers = 0;
    int today = 0;
};

// Gives the application the pinned `family`, without hinting, so that pictures are the same on every machine.
void prepareFont(const QString &family);

// Shows the application's views in any state, on fakes and in virtual time.
//
// Needs a QGuiApplication with the software scene graph.
class Stage {
public:
    explicit Stage(const StageSetup &setup);

    // Runs the animations in real time, for interactive use.
    void setRealTime() { clock().setReal(); }

    // Shows `VelmoraMac/name.qml` in a window of its own of `size`; its animations are at their start. Objects among
    // `properties` outlive the window. Null when the view cannot be loaded; the reason is in the warnings.
    QQuickItem *show(const QString &name, const QVariantMap &properties, QSize size);
    QQuickItem *showPopover();
    QQuickItem *showToast(const CleaningResult &result, bool offersCleaning);
    QQuickItem *showSettings(AppTab tab, QSize size = QSize(660, 640));
    QQuickItem *showDetails(const CleanHistoryEntry &entry);
    QQuickItem *showUpdate(const UpdateReport &report,
                           QSize size = {}); // As its window shows it without a size.

    // Closes the window.
    void clear() { view_.reset(); }

    [[nodiscard]] QQuickView *window() const { return view_.get(); }

    // Lets `time` pass frame by frame, as it does on screen.
    void pass(std::chrono::milliseconds time);
    // What the window shows now.
    [[nodiscard]] QImage picture();

    [[nodiscard]] AnimationClock &clock() { return *AnimationClock::in(engine_); }

    [[nodiscard]] Surroundings &surroundings() { return *Surroundings::in(engine_); }

    FakeServices fakes;
    std::unique_ptr<AppState> state;
    PopoverAnimationState popoverAnimation;
    NotificationCenter notifications;
    std::unique_ptr<UpdateController> updates;
    FakeAppWindows windows;
    std::unique_ptr<UpdateWindow> updateWindow;
    QStringList warnings; // Of the QML engine.

private:
    // The popover's window grows when there is a first result.
    void finishIncubation();
    void growPopover(std::chrono::milliseconds step);

    bool showsPopover_ = false;
    std::chrono::milliseconds growth_{0};
    QQmlEngine engine_;
    std::unique_ptr<QQuickView> view_;
};
