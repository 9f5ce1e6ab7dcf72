import QtQuick
import VelmoraMac
import QtQuick.Templates as T

// A switch on a themed panel: a capsule whose colours are the theme's when it is on.
T.Switch {
    id: root

    required property velmoraThemePalette themePalette
    // How far the switch is on, 0 to 1 and a little beyond while it swings.
    readonly property real progress: knobMotion.value
    readonly property color ground: themePalette.primaryText

    implicitWidth: 50
    implicitHeight: 28
    Accessible.name: text
    Accessible.onPressAction: root.toggleByHand()
    Accessible.onToggleAction: root.toggleByHand()

    function toggleByHand() {
        root.toggle();
        root.toggled();
    }

    indicator: Item {
        width: 50
        height: 28

        Rectangle {
            anchors.fill: parent
            radius: 14
            color: Qt.rgba(root.ground.r, root.ground.g, root.ground.b, root.hovered ? 0.26 : 0.18)
            border.color: Qt.rgba(root.ground.r, root.ground.g, root.ground.b, 0.18)
        }
        Rectangle {
            anchors.fill: parent
            radius: 14
            opacity: Math.min(1, Math.max(0, root.progress))
            gradient: Gradient {
                orientation: Gradient.Horizontal

                GradientStop {
                    position: 0
                    color: root.themePalette.switchColors[0]
                }
                GradientStop {
                    position: 1
                    color: root.themePalette.switchColors[1]
                }
            }
        }
        Rectangle {
            x: 13 - 11 + 22 * root.progress
            y: 2
            width: 24
            height: 24
            radius: 12
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

    SpringValue {
        id: knobMotion

        to: root.checked ? 1 : 0
        response: 0.32
        dampingFraction: 0.82
    }
}
