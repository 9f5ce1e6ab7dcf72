#include "KeyboardClaim.h"

#include "LayerShell.h"

#include <layer-shell-client-header.h>
#include <utility>
#include <wayland-client-protocol.h>

namespace {
constexpr std::uint32_t onDemandVersion = 4;
}

struct KeyboardClaim::Listeners {
    static constexpr wl_callback_listener trial = {.done = [](void *data, wl_callback *, std::uint32_t) {
        static_cast<KeyboardClaim *>(data)->endTrial();
    }};

    static constexpr wl_callback_listener absence = {.done = [](void *data, wl_callback *, std::uint32_t) {
        static_cast<KeyboardClaim *>(data)->judgeAbsence();
    }};
};

KeyboardClaim::KeyboardClaim(const LayerShell &shell, wl_surface *surface, zwlr_layer_surface_v1 *role,
                             Handlers handlers)
    : shell_(shell)
    , surface_(surface)
    , role_(role)
    , handlers_(std::move(handlers))
{
    const bool canDemand = zwlr_layer_surface_v1_get_version(role) >= onDemandVersion;
    ask(canDemand ? Way::onDemand : Way::exclusiveForGood);
}

KeyboardClaim::~KeyboardClaim()
{
    endTrial();
    endAbsence();
}

void KeyboardClaim::handleShown()
{
    isShown_ = true;
    if (hasKeyboard_ || way_ != Way::onDemand)
        return;
    ask(Way::exclusive);
    wl_surface_commit(surface_);
}

void KeyboardClaim::handleEnter()
{
    hasKeyboard_ = true;
    if (way_ != Way::exclusive)
        return;
    ask(Way::letGo);
    wl_surface_commit(surface_);
    trial_ = wl_display_sync(shell_.connection().display());
    wl_callback_add_listener(trial_, &Listeners::trial, this);
}

void KeyboardClaim::handleLeave()
{
    hasKeyboard_ = false;
    if (trial_ != nullptr) { // The answer to the letting go.
        endTrial();
        ask(Way::exclusiveForGood);
        wl_surface_commit(surface_);
    } else if (isShown_ && absence_ == nullptr) {
        absence_ = wl_display_sync(shell_.connection().display());
        wl_callback_add_listener(absence_, &Listeners::absence, this);
    }
}

void KeyboardClaim::judgeAbsence()
{
    endAbsence();
    if (!hasKeyboard_ || !handlers_.isPointedAt())
        turnAway();
}

void KeyboardClaim::turnAway()
{
    if (way_ == Way::none)
        return;
    endTrial();
    ask(Way::none);
    wl_surface_commit(surface_);
    const auto turnedAway = handlers_.turnedAway; // May destroy this object.
    turnedAway();
}

void KeyboardClaim::ask(Way way)
{
    way_ = way;
    std::uint32_t interactivity = ZWLR_LAYER_SURFACE_V1_KEYBOARD_INTERACTIVITY_NONE;
    if (way == Way::onDemand || way == Way::letGo)
        interactivity = ZWLR_LAYER_SURFACE_V1_KEYBOARD_INTERACTIVITY_ON_DEMAND;
    else if (way != Way::none)
        interactivity = ZWLR_LAYER_SURFACE_V1_KEYBOARD_INTERACTIVITY_EXCLUSIVE;
    zwlr_layer_surface_v1_set_keyboard_interactivity(role_, interactivity);
}

void KeyboardClaim::endTrial()
{
    if (trial_ != nullptr)
        wl_callback_destroy(std::exchange(trial_, nullptr));
}

void KeyboardClaim::endAbsence()
{
    if (absence_ != nullptr)
        wl_callback_destroy(std::exchange(absence_, nullptr));
}
