#pragma once

#include <QByteArray>
#include <QList>
#include <QMargins>
#include <QPointF>
#include <QRect>
#include <QStringList>
#include <QTemporaryDir>

#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

// A Wayland compositor that shows nothing but surfaces of the layer shell, on a thread of its own. Does what a test
// says, and remembers what clients ask for.
class LayerShellServer {
public:
    struct Offer {
        bool shell = true;
        int shellVersion = 4;
        bool viewports = true;
        bool fractions = true;
        bool outputFrames = true;
        // What a bar takes of each screen's height.
        int bar = 0;
        // Of each screen; they are 1280 x 800 points and stand side by side.
        std::vector<double> scales = {1.0};
    };

    // A surface with a role, as its client has committed it.
    struct Panel {
        QSize size;
        std::uint32_t anchors = 0;
        QMargins margins;
        std::uint32_t keyboard = 0;
        std::uint32_t layer = 0;
        int zone = 0;
        int output = -1; // Its place in `scales`; -1 leaves the choice to the compositor.
        bool acceptsInput = true;
        int pictures = 0; // Commits with a new picture.
        QSize pixels;     // Of the last one.
        int bufferScale = 1;
        QSize destination;
        std::uint32_t centre = 0; // Of the picture, as in a QRgb.
    };

    explicit LayerShellServer(Offer offer);
    ~LayerShellServer();
    Q_DISABLE_COPY_MOVE(LayerShellServer)

    // As for $WAYLAND_DISPLAY.
    [[nodiscard]] QByteArray display() const;

    // The compositor ends, with all its connections; and begins again under the same name.
    void stop();
    void start();

    // What exists now, oldest first. What follows is about the newest of them.
    [[nodiscard]] std::vector<Panel> panels();
    // What clients have done against the protocol's rules.
    [[nodiscard]] QStringList faults();
    // Whether a client has acknowledged every configuration.
    [[nodiscard]] bool isAcknowledged();

    // Without this a surface is configured by its first commit.
    void holdConfigurations();
    void configure();
    // The last picture is on screen; the client may send the next one.
    void showPicture();
    void enterOutput(int output);
    void leaveOutput(int output);
    void preferScale(double scale);
    void close();

    // Where the mouse is, in points of all screens: a panel that covers the place gets it with its next picture.
    void putPointer(QPoint place);
    // The mouse comes to a place on the panel, or goes away from it.
    void movePointer(QPointF place);
    void leavePointer();
    // The mouse comes to a place of this screen where no window is, or goes away from it; what is there is closed. Without
    // a surface there, nobody is told.
    void movePointerToDesktop(int output);
    void leavePointerFromDesktop(int output);
    void closeDesktop(int output);
    void pressLeftButton(bool isDown);
    void turnWheel(int clicks);
    // A finger comes, moves, and goes.
    void touch(const std::vector<QPointF> &places);
    void giveKeyboard(bool isGiven);
    // It is taken away and given back in one.
    void interruptKeyboard();
    // From now on a panel that has the keyboard loses it when it asks for it on demand.
    void loseKeyboardOnDemand();
    // All that was asked for, in order; ZWLR_LAYER_SURFACE_V1_KEYBOARD_INTERACTIVITY_...
    [[nodiscard]] QList<std::uint32_t> keyboardRequests();
    // By the number that the kernel has for it.
    void pressKey(std::uint32_t code, bool isDown);
    void setKeyRepeat(int timesPerSecond, int delay); // The delay in milliseconds.
    void removeOutput(int output);
    // Beside the others, with as many pixels as points.
    void addOutput();

private:
    class Compositor; // Lives on the thread.

    void run(const std::function<void(Compositor &)> &action);

    Offer offer_;
    QTemporaryDir folder_;
    std::unique_ptr<Compositor> compositor_;
};
