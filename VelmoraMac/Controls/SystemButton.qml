import QtQuick
import VelmoraMac

// A push button in the style of the desktop's forms.
PressButton {
    id: root

    property bool prominent: false

    implicitHeight: 24
    horizontalPadding: 11
    opacity: enabled ? 1 : 0.5

    contentItem: Text {
        text: root.text
        textFormat: Text.PlainText
        font.pixelSize: 13
        horizontalAlignment: Text.AlignHCenter
        verticalAlignment: Text.AlignVCenter
        color: root.prominent ? "white" : Surroundings.colors.label
    }
    background: RoundedBox {
        radius: 6
        color: {
            const rest = root.prominent ? Surroundings.colors.accent : Surroundings.colors.buttonFill;
            if (root.down)
                return Qt.tint(rest, Qt.rgba(0, 0, 0, 0.13));
            return root.hovered ? Qt.tint(rest, Qt.alpha(Surroundings.colors.label, 0.06)) : rest;
        }
        borderColor: Surroundings.colors.cardStroke

        FocusRing {
            shown: root.visualFocus
            radius: 9
        }
    }
}
