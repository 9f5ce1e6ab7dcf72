#include "QuickViews.h"

#include "QuickAppWindow.h"
#include "QuickPanel.h"
#include "ViewRequest.h"

#include <VelmoraMac/StyleKit/Surroundings.h>

#include <QPointer>
#include <QQuickItem>

#include <utility>

using namespace std::chrono_literals;

namespace {
// What drawing took is given back when nothing follows at once.
constexpr auto restBeforeRelease = 2s;
// Long enough to open the popover again without making everything anew.
constexpr auto engineKeptFor = 60s;
} // namespace

QuickViews::QuickViews(Desktop desktop)
    : desktop_(std::move(desktop))
{
    desktop_.appearance.addChangeHandler([self = QPointer(this)] {
        if (self)
            self->followAppearance();
    });
}

QuickViews::~QuickViews() = default;

std::unique_ptr<Panel> QuickViews::makePanel(const View &view, const PanelOptions &options)
{
    return std::make_unique<QuickPanel>(load(view), options, desktop_.windows, desktop_.appearance);
}

std::unique_ptr<AppWindow> QuickViews::makeWindow(const View &view, const AppWindowOptions &options)
{
    return std::make_unique<QuickAppWindow>(load(view), options, desktop_.windows, desktop_.screens);
}

QuickWindow QuickViews::load(const View &view)
{
    QuickWindow window(new QQuickView(&engine(), nullptr));
    liveViews_.append(window.get());
    ++loads_;
    connect(window.get(), &QObject::destroyed, this, [this, gone = window.get()] { viewGone(gone); });
    window->setColor(Qt::transparent);
    window->setResizeMode(QQuickView::SizeRootObjectToView);
    window->setInitialProperties(view.properties);
    window->setSource(view.source);
    for (const View::Request &request : view.requests)
        ViewRequest::connect(window->rootObject(), request);
    return window;
}

QQmlEngine &QuickViews::engine()
{
    if (!engine_) {
        engine_ = std::make_unique<QQmlEngine>();
        engine_->addImportPath(QStringLiteral("qrc:/qt/qml"));
        followAppearance();
    }
    return *engine_;
}

void QuickViews::followAppearance()
{
    if (!engine_)
        return;
    auto *surroundings = Surroundings::in(*engine_);
    if (surroundings == nullptr)
        return;
    surroundings->setDarkAppearance(desktop_.appearance.colorScheme() == Appearance::ColorScheme::dark);
    surroundings->setReducedMotion(desktop_.appearance.reducesMotion());
}

void QuickViews::forgetEngine()
{
    engine_.reset();
    desktop_.releaseMemory();
}

void QuickViews::closeAll()
{
    for (QQuickView *view : std::as_const(liveViews_)) {
        view->hide();
        view->setSource({});
    }
}

void QuickViews::viewGone(QQuickView *view)
{
    liveViews_.removeOne(view);
    if (!liveViews_.isEmpty())
        return;
    afterRest(restBeforeRelease, [this] { desktop_.releaseMemory(); });
    afterRest(engineKeptFor, [this] { forgetEngine(); });
}

// Runs `step` unless a view is loaded in the meantime.
void QuickViews::afterRest(std::chrono::seconds rest, std::function<void()> step)
{
    desktop_.scheduler.after(rest, [self = QPointer(this), loads = loads_, step = std::move(step)] {
        if (self && self->loads_ == loads)
            step();
    });
}
