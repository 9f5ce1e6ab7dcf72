#include "SurfacePanel.h"

#include <QKeyEvent>

#include <limits>

SurfacePanel::SurfacePanel(OffscreenPicture view, const PanelOptions &options, PanelSurfaces &surfaces,
                           const Appearance &appearance)
    : view_(std::move(view))
    , cancelled_(options.cancelled)
    , surface_(
          surfaces.makeSurface({.acceptsMouse = options.acceptsMouse,
                                .takesKeyboard = options.cancelled != nullptr,
                                .followsUser = options.followsUser},
                               {.draw = [this](double scale) -> const QImage & { return view_->draw(scale); },
                                .input = [this](QEvent &event) { handleInput(event); },
                                .removed =
                                    [cancelled = options.cancelled] {
                                        if (cancelled)
                                            cancelled();
                                    }}))
    , frame_(options.size, appearance, [this](const QRect &frame) { place(frame); })
{
    view_->resize(options.size);
    connect(view_.get(), &OffscreenView::changed, this, [this] { surface_->requestPicture(); });
}

void SurfacePanel::orderFront()
{
    surface_->show();
}

void SurfacePanel::orderOut()
{
    frame_.stop();
    surface_->hide();
}

quintptr SurfacePanel::windowId() const
{
    return std::numeric_limits<quintptr>::max();
}

void SurfacePanel::place(const QRect &frame)
{
    view_->resize(frame.size());
    surface_->setFrame(frame);
    surface_->requestPicture();
}

void SurfacePanel::handleInput(QEvent &event)
{
    const bool isEscape =
        event.type() == QEvent::KeyPress && static_cast<QKeyEvent &>(event).key() == Qt::Key_Escape;
    const bool isTurnedAway = event.type() == QEvent::FocusOut;
    if (cancelled_ && (isEscape || isTurnedAway)) {
        const auto cancelled = cancelled_; // May destroy this object.
        cancelled();
        return;
    }
    view_->deliver(event);
}
