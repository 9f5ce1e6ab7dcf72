#include "QuickViews.h"

#include "QuickAppWindow.h"
#include "QuickPanel.h"
#include "SurfacePanel.h"
#include "ViewEnvironment.h"
#include "ViewRequest.h"

#include <VelmoraMac/StyleKit/Surroundings.h>

#include <QPointer>
#include <QQuickItem>

#include <algorithm>
#include <utility>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {
// Memory for drawing is released when no other view follows soon.
constexpr auto releaseDelay = 2s;
// Long enough to open the popover again without creating the engine again.
constexpr auto engineDelay = 60s;
} // namespace

QuickViews::QuickViews(Dependencies dependencies)
    : dependencies_(std::move(dependencies))
    , idle_(dependencies_.scheduler)
{
    const auto follow = [self = QPointer(this)] {
        if (self)
            self->followDesktop();
    };
    dependencies_.appearance.addChangeHandler(follow);
    dependencies_.windows.setBlendingHandler(follow);
}

QuickViews::~QuickViews() = default;

std::unique_ptr<Panel> QuickViews::makePanel(const View &view, const PanelOptions &options)
{
    PanelSurfaces *surfaces = dependencies_.surfaces;
    if (surfaces != nullptr && surfaces->areOffered())
        return std::make_unique<SurfacePanel>(loadOffscreen(view), options, *surfaces,
                                              dependencies_.appearance);
    return std::make_unique<QuickPanel>(load(view), options, dependencies_.windows, dependencies_.appearance);
}

std::unique_ptr<AppWindow> QuickViews::makeWindow(const View &view, const AppWindowOptions &options)
{
    return std::make_unique<QuickAppWindow>(load(view), options, dependencies_.windows,
                                            dependencies_.screens);
}

QuickWindow QuickViews::load(const View &view)
{
    QuickWindow window(new QQuickView(&engine(), nullptr));
    keepWhile(*window, [view = window.get()] {
        view->hide();
        view->setSource({});
    });
    connect(window.get(), &QWindow::visibleChanged, this,
            [this, view = window.get()](bool isVisible) { setHidden(*view, !isVisible); });
    window->setColor(Qt::transparent);
    window->setResizeMode(QQuickView::SizeRootObjectToView);
    window->setInitialProperties(view.properties);
    window->setSource(view.source);
    for (const View::Request &request : view.requests)
        ViewRequest::connect(window->rootObject(), request);
    return window;
}

OffscreenPicture QuickViews::loadOffscreen(const View &view)
{
    OffscreenPicture picture(new OffscreenView(engine(), view));
    keepWhile(*picture, [view = picture.get()] { view->close(); });
    for (const View::Request &request : view.requests)
        ViewRequest::connect(picture->rootItem(), request);
    return picture;
}

// The engine lives at least as long as `view`.
void QuickViews::keepWhile(QObject &view, std::function<void()> close)
{
    liveViews_.emplace(&view, LiveView{.close = std::move(close)});
    idle_.startOver();
    connect(&view, &QObject::destroyed, this, [this, gone = &view] { viewDestroyed(gone); });
}

QQmlEngine &QuickViews::engine()
{
    if (!engine_) {
        engine_ = std::make_unique<QQmlEngine>();
        engine_->addImportPath(u"qrc:/qt/qml"_s);
        if (state_ != nullptr)
            ViewEnvironment::provide(*engine_, *state_);
        followDesktop();
    }
    return *engine_;
}

void QuickViews::followDesktop()
{
    if (!engine_)
        return;
    auto *surroundings = Surroundings::in(*engine_);
    if (surroundings == nullptr)
        return;
    surroundings->setDarkAppearance(dependencies_.appearance.colorScheme() == Appearance::ColorScheme::dark);
    surroundings->setReducedMotion(dependencies_.appearance.reducesMotion());
    surroundings->setIncreasedContrast(dependencies_.appearance.increasesContrast());
    surroundings->setBlendsWindows(dependencies_.windows.blendsWindows());
}

void QuickViews::forgetEngine()
{
    engine_.reset();
    dependencies_.releaseMemory();
}

void QuickViews::closeAll()
{
    for (const auto &[view, live] : liveViews_)
        live.close();
}

void QuickViews::setHidden(const QObject &view, bool isHidden)
{
    liveViews_.at(&view).isHidden = isHidden;
    idle_.startOver();
    releaseWhenIdle();
}

void QuickViews::viewDestroyed(const QObject *view)
{
    liveViews_.erase(view);
    releaseWhenIdle();
}

void QuickViews::releaseWhenIdle()
{
    const bool isIdle = std::all_of(liveViews_.begin(), liveViews_.end(),
                                    [](const auto &entry) { return entry.second.isHidden; });
    if (!isIdle)
        return;
    idle_.startOver();
    idle_.after(releaseDelay, [this] { dependencies_.releaseMemory(); });
    if (liveViews_.empty())
        idle_.after(engineDelay, [this] { forgetEngine(); });
}
