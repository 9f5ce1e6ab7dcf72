#include "LayerPanels.h"

#include <VelmoraLinux/StatusItem/StatusItemAnchor.h>

#include <algorithm>
#include <utility>

namespace {

constexpr auto longestStart = std::chrono::seconds(2);
constexpr std::chrono::nanoseconds firstRetry = std::chrono::milliseconds(250);
constexpr std::chrono::nanoseconds lastRetry = std::chrono::seconds(8);

} // namespace

// On screen while it has a layer surface.
class LayerPanels::Surface : public PanelSurface {
public:
    Surface(LayerPanels &panels, const PanelSurfaceTraits &traits, Handlers handlers)
        : panels_(panels)
        , traits_(traits)
        , handlers_(std::move(handlers))
        , onScreen_{.draw = handlers_.draw, .input = handlers_.input, .removed = [this] { remove(); }}
    {
    }

    ~Surface() override { takeAway(); }

    Q_DISABLE_COPY_MOVE(Surface)

    void setFrame(const QRect &frame) override
    {
        frame_ = frame;
        if (layer_)
            layer_->setFrame(frame);
    }

    void show() override
    {
        if (layer_ || !panels_.areOffered())
            return;
        panels_.shown_.push_back(this);
        panels_.watchBareDesktop(); // First: sway 1.7 judges with every new surface who has the keyboard.
        layer_ = std::make_unique<LayerSurface>(
            LayerSurface::Dependencies{*panels_.shell_, panels_.outputs_, panels_.seat_}, traits_, onScreen_,
            frame_);
    }

    void hide() override { takeAway(); }

    [[nodiscard]] bool isVisible() const override { return layer_ != nullptr; }

    void requestPicture() override
    {
        if (layer_)
            layer_->requestPicture();
    }

    void remove()
    {
        takeAway();
        const auto removed = handlers_.removed; // May destroy this object.
        removed();
    }

    [[nodiscard]] bool takesKeyboard() const { return traits_.takesKeyboard; }

    void turnAway()
    {
        if (layer_)
            layer_->turnAway();
    }

private:
    void takeAway()
    {
        layer_.reset();
        std::erase(panels_.shown_, this);
        panels_.watchBareDesktop();
    }

    LayerPanels &panels_;
    PanelSurfaceTraits traits_;
    Handlers handlers_;
    Handlers onScreen_;
    QRect frame_;
    std::unique_ptr<LayerSurface> layer_;
};

std::unique_ptr<LayerPanels> LayerPanels::create(Scheduler &scheduler, QByteArray display)
{
    std::unique_ptr<LayerPanels> made(new LayerPanels(scheduler, std::move(display)));
    // Once for what the compositor offers, once for its screens.
    if (!made->connect() || !made->connection_->roundTrip(longestStart) || !made->areOffered() ||
        !made->connection_->roundTrip(longestStart))
        return nullptr;
    return made;
}

LayerPanels::LayerPanels(Scheduler &scheduler, QByteArray display)
    : scheduler_(scheduler)
    , display_(std::move(display))
    , retryDelay_(firstRetry)
    , connectionSteps_(scheduler)
{
}

LayerPanels::~LayerPanels()
{
    disconnect();
}

std::unique_ptr<PanelSurface> LayerPanels::makeSurface(const PanelSurfaceTraits &traits,
                                                       PanelSurface::Handlers handlers)
{
    return std::make_unique<Surface>(*this, traits, std::move(handlers));
}

bool LayerPanels::connect()
{
    connection_ = WaylandConnection::open(display_);
    if (!connection_)
        return false;
    // The end of a connection must not come from within one of its own calls.
    connection_->setLostHandler([this] { connectionSteps_.after({}, [this] { reconnectLater(); }); });
    shell_ = std::make_unique<LayerShell>(
        *connection_, LayerShell::Handlers{.outputAdded =
                                               [this](std::uint32_t name, std::uint32_t version) {
                                                   retryDelay_ = firstRetry; // The compositor works.
                                                   outputs_.add(*shell_, name, version);
                                                   if (bareDesktop_)
                                                       bareDesktop_->followScreens();
                                               },
                                           .outputManagerAdded = [this] { outputs_.describe(*shell_); },
                                           .seatAdded =
                                               [this](std::uint32_t name, std::uint32_t version) {
                                                   seat_.addSeat(*shell_, name, version);
                                               },
                                           .removed =
                                               [this](std::uint32_t name) {
                                                   outputs_.remove(name);
                                                   if (bareDesktop_)
                                                       bareDesktop_->followScreens();
                                                   seat_.removeSeat(name);
                                               }});
    locator_ = std::make_unique<ClickLocator>(*shell_, outputs_, seat_, scheduler_);
    return true;
}

void LayerPanels::disconnect()
{
    connectionSteps_.startOver();
    while (!shown_.empty())
        shown_.back()->remove();
    locator_.reset();
    seat_.disconnect();
    outputs_.disconnect();
    shell_.reset();
    connection_.reset();
}

void LayerPanels::reconnectLater()
{
    disconnect();
    connectionSteps_.after(retryDelay_, [this] {
        if (!connect())
            reconnectLater();
    });
    retryDelay_ = std::min(retryDelay_ * 2, lastRetry);
}

void LayerPanels::watchBareDesktop()
{
    const bool isWanted = std::any_of(shown_.begin(), shown_.end(),
                                      [](const Surface *surface) { return surface->takesKeyboard(); });
    if (!isWanted)
        bareDesktop_.reset();
    else if (!bareDesktop_)
        bareDesktop_ = std::make_unique<BareDesktop>(*shell_, outputs_, seat_, [this] { turnAway(); });
}

// A panel that is told may take others along.
void LayerPanels::turnAway()
{
    const std::vector<Surface *> told = shown_;
    for (Surface *surface : told) {
        const bool isShown = std::find(shown_.begin(), shown_.end(), surface) != shown_.end();
        if (isShown)
            surface->turnAway();
    }
}

void LayerPanels::locateIcon(QPoint hint, std::function<void(const QRect &icon)> done)
{
    if (!areOffered())
        return done(iconAt(std::nullopt));
    const QRect screen = outputs_.frameAt(hint);
    const bool isPlace =
        isClickPosition(hint, screen.isEmpty() ? std::nullopt : std::optional(ScreenFrame{screen, screen}));
    using Wanted = ClickLocator::Wanted;
    locator_->locate(isPlace ? Wanted::workAreas : Wanted::workAreasAndPointer,
                     [this, hint, isPlace, done = std::move(done)](std::optional<QPoint> pointer) {
                         done(iconAt(isPlace ? std::optional(hint) : pointer));
                     });
}

QRect LayerPanels::iconAt(const std::optional<QPoint> &click)
{
    if (!click) {
        const QRect area = outputs_.mainWorkArea();
        return fallbackAnchor({outputs_.frameAt(area.center()), area});
    }
    outputs_.setClick(*click);
    return anchorAround(*click, {outputs_.frameAt(*click), outputs_.workAreaAt(*click)});
}
