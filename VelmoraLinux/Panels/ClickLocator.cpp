#include "ClickLocator.h"

#include <QMouseEvent>

#include <algorithm>
#include <layer-shell-client-header.h>
#include <utility>

using namespace std::chrono_literals;

namespace {

// Some bars report a click when the button goes down, and the pointer is theirs until it goes up.
constexpr auto patience = 250ms;
constexpr std::uint32_t layer = ZWLR_LAYER_SHELL_V1_LAYER_OVERLAY;

} // namespace

ClickLocator::ClickLocator(const LayerShell &shell, WaylandOutputs &outputs, SeatInput &seat,
                           Scheduler &scheduler)
    : shell_(shell)
    , outputs_(outputs)
    , seat_(seat)
    , steps_(scheduler)
{
}

ClickLocator::~ClickLocator()
{
    uncover();
}

void ClickLocator::locate(Wanted wanted, Handler done)
{
    uncover();
    steps_.startOver();
    const bool canSeePointer = shell_.viewporter() != nullptr && seat_.hasPointer();
    wanted_ = canSeePointer ? wanted : Wanted::workAreas;
    done_ = std::move(done);
    pointer_.reset();
    for (wl_output *output : outputs_.all()) {
        measure(output);
        if (wanted_ == Wanted::workAreasAndPointer)
            cover(output);
    }
    shell_.connection().flush();
    steps_.after(patience, [this] { finish(); });
}

void ClickLocator::measure(wl_output *output)
{
    const auto measured = [this, output](QSize size) {
        outputs_.setUsableSize(output, size);
        finishWhenKnown();
    };
    covers_.emplace_back(shell_, seat_, output, layer,
                         ScreenCover::Handlers{.measured = measured, .input = nullptr, .closed = [this] {
                                                   finishWhenKnown();
                                               }});
}

void ClickLocator::cover(wl_output *output)
{
    covers_.emplace_back(
        shell_, seat_, output, layer,
        ScreenCover::Handlers{.measured = [this](QSize) { finishWhenKnown(); },
                              .input = [this, output](QEvent &event) { notice(output, event); },
                              .closed = [this] { finishWhenKnown(); }});
}

void ClickLocator::notice(const wl_output *output, const QEvent &event)
{
    if (event.type() != QEvent::MouseMove || pointer_)
        return;
    const QPointF place = static_cast<const QMouseEvent &>(event).position();
    pointer_ = outputs_.frameOf(output).topLeft() + place.toPoint();
    finishWhenKnown();
}

// Not from within the connection's calls: the handler may do anything.
void ClickLocator::finishWhenKnown()
{
    const bool areMeasured = std::all_of(covers_.begin(), covers_.end(),
                                         [](const ScreenCover &cover) { return cover.isMeasured(); });
    if (areMeasured && (pointer_ || wanted_ == Wanted::workAreas))
        steps_.after({}, [this] { finish(); });
}

void ClickLocator::finish()
{
    steps_.startOver();
    uncover();
    const Handler done = std::exchange(done_, nullptr);
    if (done)
        done(pointer_);
}

void ClickLocator::uncover()
{
    covers_.clear();
    shell_.connection().flush();
}
