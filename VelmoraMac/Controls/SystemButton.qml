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
            const rest = root.prominent ? Surroundings.colors.blue
                                        : (Surroundings.darkAppearance ? Qt.rgba(1, 1, 1, 0.16) : "white");
            return root.down ? Qt.darker(rest, 1.15) : rest;
        }
        borderColor: Surroundings.colors.cardStroke

        FocusRing {
            shown: root.visualFocus
            radius: 9
        }
    }
}
