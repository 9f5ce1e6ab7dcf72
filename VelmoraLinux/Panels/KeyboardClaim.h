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
    struct Handlers {
        std::function<bool()> isPointedAt; // Whether the mouse is on the panel.
        std::function<void()> turnedAway;  // The user has turned to something else; may end the claim.
    };

    // All outlive the claim. Asks for the keyboard with the surface's next commit.
    KeyboardClaim(const LayerShell &shell, wl_surface *surface, zwlr_layer_surface_v1 *role,
                  Handlers handlers);
    ~KeyboardClaim();
    Q_DISABLE_COPY_MOVE(KeyboardClaim)

    // The panel is on screen.
    void handleShown();
    void handleEnter();
    void handleLeave();
    // Gives the keyboard back and tells so, once.
    void turnAway();

private:
    enum class Way { onDemand, exclusive, letGo, exclusiveForGood, none };

    void ask(Way way);
    void endTrial();
    void endAbsence();
    void judgeAbsence();

    struct Listeners; // What the protocol calls.

    const LayerShell &shell_;
    wl_surface *surface_;
    zwlr_layer_surface_v1 *role_;
    Way way_ = Way::exclusiveForGood;
    // From what they do not see nobody turns away, though sway 1.10 gives and takes the keyboard.
    bool isShown_ = false;
    bool hasKeyboard_ = false;
    Handlers handlers_;
    wl_callback *trial_ = nullptr; // Answered when the compositor has acted on the letting go.
    // Answered after all that the compositor said together with the leave: sway 1.10 takes the keyboard away and gives it
    // back at once when the mouse comes onto the panel, sway 1.7 when it clicks into a window.
    wl_callback *absence_ = nullptr;
};
