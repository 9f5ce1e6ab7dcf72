import QtQuick
import VelmoraMac
import QtQuick.Templates as T

// A push button as the desktop's forms have it.
T.Button {
    id: root

    property bool prominent: false

    implicitWidth: implicitContentWidth + leftPadding + rightPadding
    implicitHeight: 24
    horizontalPadding: 11
    opacity: enabled ? 1 : 0.5
    Accessible.name: text
    Accessible.onPressAction: root.clicked()
    Keys.onReturnPressed: root.clicked()
    Keys.onEnterPressed: root.clicked()

    contentItem: Text {
        text: root.text
        textFormat: Text.PlainText
        font.pixelSize: 13
        horizontalAlignment: Text.AlignHCenter
        verticalAlignment: Text.AlignVCenter
        color: root.prominent ? "white" : Surroundings.colors.label
    }
    background: Rectangle {
        radius: 6
        color: {
            const rest = root.prominent ? Surroundings.colors.blue
                                        : (Surroundings.darkAppearance ? Qt.rgba(1, 1, 1, 0.16) : "white");
            return root.down ? Qt.darker(rest, 1.15) : rest;
        }
        border.color: Surroundings.colors.cardStroke

        FocusRing {
            shown: root.visualFocus
            radius: 9
        }
    }
}
