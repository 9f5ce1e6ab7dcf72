import QtQuick
import VelmoraMac

// The answer of something that can be clicked to the pointer above it: a little lighter, more saturated and larger.
Item {
    id: root

    required property bool hovering
    readonly property real lift: Math.max(0, motion.value)
    // The scale of what answers, about its middle.
    readonly property real growth: Surroundings.reducedMotion ? 1 : 1 + 0.012 * lift

    function lit(color: color): color {
        return Surroundings.lit(color, 0.075 * lift, 1 + 0.13 * lift);
    }

    visible: false

    SpringValue {
        id: motion

        to: root.hovering ? 1 : 0
        response: 0.34
        dampingFraction: 0.82
    }
}
