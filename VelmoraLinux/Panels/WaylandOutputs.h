#pragma once

#include "LayerShell.h"

#include <VelmoraPlatform/Screens.h>

#include <QRectF>
#include <QSize>

#include <functional>
#include <list>
#include <optional>
#include <utility>
#include <vector>

struct wl_output;
struct zxdg_output_v1;

// The screens of a Wayland compositor, in the space in which it arranges them.
class WaylandOutputs : public Screens {
public:
    WaylandOutputs() = default;
    ~WaylandOutputs() override;
    Q_DISABLE_COPY_MOVE(WaylandOutputs)

    void add(const LayerShell &shell, std::uint32_t name, std::uint32_t version);
    void remove(std::uint32_t name);
    // Asks for what is told by a protocol of its own, once that is known.
    void describe(const LayerShell &shell);
    // Before the connection ends. The frames stay known until others are.
    void disconnect();

    [[nodiscard]] QRect mainWorkArea() const override;
    [[nodiscard]] QRect workAreaAt(QPoint point) const override;

    // What bars of layer-shell leave: the area from which the compositor counts the distances of a panel.
    [[nodiscard]] QRect mainLayerArea() const;
    [[nodiscard]] QRect layerAreaAt(QPoint point) const;

    // Tells which part of all screens together bars leave that are no layer surfaces, in fractions of their whole.
    void setFreePart(std::function<QRectF()> freePart) { freePart_ = std::move(freePart); }

    // The screen that holds `point`; null when none does.
    [[nodiscard]] wl_output *outputAt(QPoint point) const;
    [[nodiscard]] std::vector<wl_output *> all() const;
    // The whole screen; empty for one that is gone.
    [[nodiscard]] QRect frameOf(const wl_output *output) const;
    [[nodiscard]] QRect frameAt(QPoint point) const;
    // What bars leave of a screen.
    void setUsableSize(const wl_output *output, QSize size);

    // A bar was clicked there: it tells on which side of the work areas the bars are.
    void setClick(QPoint click) { click_ = click; }

    // How many pixels a point has; on the finest screen for null.
    [[nodiscard]] double scaleOf(const wl_output *output) const;

private:
    struct Output {
        std::uint32_t name = 0;
        wl_output *proxy = nullptr;
        zxdg_output_v1 *description = nullptr;
        int scale = 1;
        QPoint corner;
        QSize pixels;
        bool isTurned = false; // By a quarter, so that width and height change places.
        QRect logical;         // As told by the description; empty without one.
        QSize usable;          // Empty as long as it is not known.

        [[nodiscard]] QSize turnedPixels() const;
        [[nodiscard]] QRect frame() const;
        [[nodiscard]] double exactScale() const;
    };

    static void describe(const LayerShell &shell, Output &output);
    static void release(Output &output);
    [[nodiscard]] const Output *holderOf(QPoint point) const;
    [[nodiscard]] QRect layerAreaOf(const Output &output) const;
    [[nodiscard]] QRect withoutOtherBars(const QRect &area) const;

    struct Listeners;

    std::list<Output> outputs_; // Listeners point to the elements.
    QRect lastMain_;
    std::function<QRectF()> freePart_;
    std::optional<QPoint> click_;
};
