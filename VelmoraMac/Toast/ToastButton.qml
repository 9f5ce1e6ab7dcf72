import QtQuick
import VelmoraMac

// The warning's prominent button.
PressButton {
    id: root

    readonly property color labelColor: Qt.rgba(1, 1, 1, Surroundings.increasedContrast ? 1 : 0.66)

    horizontalPadding: 9
    verticalPadding: 4
    topInset: 3

    contentItem: Row {
        topPadding: 3
        spacing: 5

        SymbolImage {
            anchors.verticalCenter: parent.verticalCenter
            symbolName: "wand.and.sparkles"
            pointSize: 11
            color: root.labelColor
        }
        Text {
            anchors.verticalCenter: parent.verticalCenter
            text: root.text
            textFormat: Text.PlainText
            font.pixelSize: 11
            font.weight: Font.DemiBold
            color: root.labelColor
        }
    }
    background: RoundedBox {
        radius: 7
        // A deep blue: the label is translucent and could not be read on the usual one.
        color: Qt.darker(Surroundings.colors.blue, root.down ? 2 : (root.hovered ? 1.7 : 1.8))

        FocusRing {
            shown: root.visualFocus
            radius: 10
        }
    }
}
