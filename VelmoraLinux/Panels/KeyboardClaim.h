#pragma once

#include <QtGlobal>

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
    // All outlive the claim. Asks for the keyboard with the surface's next commit.
    KeyboardClaim(const LayerShell &shell, wl_surface *surface, zwlr_layer_surface_v1 *role);
    ~KeyboardClaim();
    Q_DISABLE_COPY_MOVE(KeyboardClaim)

    // The panel is on screen.
    void handleShown();
    void handleEnter();
    // Whether the user has turned away, rather than that this is the answer to what was asked last.
    [[nodiscard]] bool isTurnedAwayByLeave();

private:
    enum class Way { onDemand, exclusive, letGo, exclusiveForGood, none };

    void ask(Way way);
    void endTrial();

    struct Listeners; // What the protocol calls.

    const LayerShell &shell_;
    wl_surface *surface_;
    zwlr_layer_surface_v1 *role_;
    Way way_ = Way::exclusiveForGood;
    bool hasKeyboard_ = false;
    wl_callback *trial_ = nullptr; // Answered when the compositor has acted on the letting go.
};
