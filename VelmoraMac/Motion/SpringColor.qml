import QtQuick
import VelmoraMac

// A colour that follows another one on a spring, each of its components by itself.
QtObject {
    id: root

    required property color to
    property real response: 0.42
    property real dampingFraction: 0.86
    readonly property color value: Qt.rgba(limited(red.value), limited(green.value), limited(blue.value),
                                           limited(alpha.value))

    readonly property SpringValue red: Part { to: root.to.r }
    readonly property SpringValue green: Part { to: root.to.g }
    readonly property SpringValue blue: Part { to: root.to.b }
    readonly property SpringValue alpha: Part { to: root.to.a }

    component Part: SpringValue {
        response: root.response
        dampingFraction: root.dampingFraction
    }

    function limited(component: real): real {
        return Math.min(1, Math.max(0, component));
    }
}
