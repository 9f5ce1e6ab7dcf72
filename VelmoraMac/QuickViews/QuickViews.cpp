#include "QuickViews.h"

#include "QuickAppWindow.h"
#include "QuickPanel.h"
#include "ViewEnvironment.h"
#include "ViewRequest.h"

#include <VelmoraMac/StyleKit/Surroundings.h>

#include <QPointer>
#include <QQuickItem>

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
    liveViews_.append(window.get());
    idle_.startOver();
    connect(window.get(), &QObject::destroyed, this, [this, gone = window.get()] { viewDestroyed(gone); });
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
    surroundings->setBlendsWindows(dependencies_.windows.blendsWindows());
}

void QuickViews::forgetEngine()
{
    engine_.reset();
    dependencies_.releaseMemory();
}

void QuickViews::closeAll()
{
    for (QQuickView *view : std::as_const(liveViews_)) {
        view->hide();
        view->setSource({});
    }
}

void QuickViews::viewDestroyed(QQuickView *view)
{
    liveViews_.removeOne(view);
    if (!liveViews_.isEmpty())
        return;
    idle_.after(releaseDelay, [this] { dependencies_.releaseMemory(); });
    idle_.after(engineDelay, [this] { forgetEngine(); });
}
