import QtQuick
import VelmoraMac

// A switch on a themed panel: a capsule whose colours are the theme's when it is on.
ToggleSwitch {
    id: root

    // From 0, off, to 1, on; a little beyond while the spring overshoots.
    readonly property real progress: knobMotion.value
    readonly property color ground: Surroundings.palette.primaryText

    implicitWidth: 50
    implicitHeight: 28

    indicator: Item {
        width: 50
        height: 28
        scale: hover.growth

        RoundedBox {
            anchors.fill: parent
            radius: 14
            color: Qt.alpha(root.ground, 0.18 + 0.08 * Math.min(1, hover.lift))
            borderColor: Qt.alpha(root.ground, 0.18)
        }
        RoundedBox {
            anchors.fill: parent
            radius: 14
            opacity: Math.min(1, Math.max(0, root.progress))
            color: hover.lit(Surroundings.palette.switchColors[0])
            endColor: hover.lit(Surroundings.palette.switchColors[1])
        }
        RoundedBox {
            x: 13 - 11 + 22 * root.progress
            y: 2
            width: 24
            height: 24
            radius: 12
            aligned: !knobMotion.moving
            color: Qt.rgba(1, 1, 1, 0.95)

            SoftGlow {
                anchors.centerIn: parent
                anchors.verticalCenterOffset: 2
                z: -1
                width: 34
                height: 34
                color: "black"
                opacity: 0.4 // The glow fades to nothing: about 0.2 is left at the knob's rim.
            }
        }
        FocusRing {
            shown: root.visualFocus
            radius: 17
        }
    }

    PremiumHoverModifier {
        id: hover

        hovering: root.hovered
    }
    SpringValue {
        id: knobMotion

        to: root.checked ? 1 : 0
        response: 0.32
        dampingFraction: 0.82
    }
}
