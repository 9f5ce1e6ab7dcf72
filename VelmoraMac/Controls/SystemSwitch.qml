import QtQuick
import VelmoraMac

// A small switch in the style of the desktop's forms.
ToggleSwitch {
    id: root

    implicitWidth: 32
    implicitHeight: 18

    indicator: RoundedBox {
        readonly property color off: Qt.alpha(Surroundings.colors.label, root.hovered ? 0.32 : 0.25)

        width: 32
        height: 18
        radius: 9
        color: Qt.tint(off, Qt.alpha(Surroundings.colors.accent, Math.min(1, Math.max(0, knobMotion.value))))

        RoundedBox {
            x: 2 + 14 * knobMotion.value
            y: 2
            width: 14
            height: 14
            radius: 7
            aligned: !knobMotion.moving
            color: "white"
        }
        FocusRing {
            shown: root.visualFocus
            radius: 12
        }
    }

    SpringValue {
        id: knobMotion

        to: root.checked ? 1 : 0
        response: 0.28
        dampingFraction: 0.86
    }
}
