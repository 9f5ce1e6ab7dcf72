#include "BareDesktop.h"

#include <QEvent>

#include <algorithm>
#include <layer-shell-client-header.h>
#include <utility>

BareDesktop::BareDesktop(const LayerShell &shell, const WaylandOutputs &outputs, SeatInput &seat,
                         std::function<void()> pressed)
    : shell_(shell)
    , outputs_(outputs)
    , seat_(seat)
    , pressed_(std::move(pressed))
{
    followScreens();
}

BareDesktop::~BareDesktop()
{
    covers_.clear();
    shell_.connection().flush();
}

void BareDesktop::followScreens()
{
    if (shell_.viewporter() == nullptr)
        return;
    const std::vector<wl_output *> screens = outputs_.all();
    std::erase_if(covers_, [&screens](const ScreenCover &cover) {
        return std::find(screens.begin(), screens.end(), cover.screen()) == screens.end();
    });
    for (wl_output *screen : screens) {
        if (std::none_of(covers_.begin(), covers_.end(),
                         [screen](const ScreenCover &cover) { return cover.screen() == screen; }))
            cover(screen);
    }
    shell_.connection().flush();
}

void BareDesktop::cover(wl_output *screen)
{
    const auto tellPress = [this](const QEvent &event) {
        if (event.type() != QEvent::MouseButtonPress)
            return;
        const auto pressed = pressed_;
        pressed();
    };
    const auto uncover = [this, screen] {
        std::erase_if(covers_, [screen](const ScreenCover &cover) { return cover.screen() == screen; });
    };
    covers_.emplace_back(shell_, seat_, screen, ZWLR_LAYER_SHELL_V1_LAYER_BACKGROUND,
                         ScreenCover::Handlers{.measured = nullptr, .input = tellPress, .closed = uncover});
}
