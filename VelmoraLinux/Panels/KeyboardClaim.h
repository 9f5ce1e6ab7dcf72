#pragma once

#include <QtGlobal>

#include <functional>

class LayerShell;
struct wl_callback;
struct wl_surface;
struct zwlr_layer_surface_v1;

// How a panel comes to the keyboard. Where it can be had on demand, the user turns to another window by a click as
// usual. Compositors differ in what they take for a demand: where appearing is none, the panel claims the keyboard for
// itself first, and keeps that claim where letting go of it would lose the keyboard. Once the user has turned away it is
// not asked for again.
class KeyboardClaim {
public:
    // All outlive the claim. Asks for the keyboard with the surface's next commit. `turnedAway` is called when the user has
    // turned to something else, and may end the claim.
    KeyboardClaim(const LayerShell &shell, wl_surface *surface, zwlr_layer_surface_v1 *role,
                  std::function<void()> turnedAway);
    ~KeyboardClaim();
    Q_DISABLE_COPY_MOVE(KeyboardClaim)

    // The panel is on screen.
    void handleShown();
    void handleEnter();
    void handleLeave();

private:
    enum class Way { onDemand, exclusive, letGo, exclusiveForGood, none };

    void ask(Way way);
    void endTrial();
    void endAbsence();
    void turnAway();

    struct Listeners; // What the protocol calls.

    const LayerShell &shell_;
    wl_surface *surface_;
    zwlr_layer_surface_v1 *role_;
    Way way_ = Way::exclusiveForGood;
    bool hasKeyboard_ = false;
    std::function<void()> turnedAway_;
    wl_callback *trial_ = nullptr; // Answered when the compositor has acted on the letting go.
    // Answered after all that the compositor said together with the leave: sway 1.10 takes the keyboard away and gives it
    // back at once when the mouse comes onto the panel.
    wl_callback *absence_ = nullptr;
};
