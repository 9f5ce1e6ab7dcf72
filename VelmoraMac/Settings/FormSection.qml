import QtQuick
import VelmoraMac

// A titled card in a form; its rows are separated by lines.
Column {
    id: root

    property string title
    default property alias rows: card.data

    width: parent?.width ?? 0
    spacing: 7

    SystemText {
        visible: root.title !== ""
        leftPadding: 10
        text: root.title
        font.weight: Font.Bold
        color: Surroundings.colors.label
        Accessible.role: Accessible.Heading
    }
    RoundedBox {
        width: parent.width
        height: card.implicitHeight
        radius: 10
        color: Surroundings.colors.cardFill
        borderColor: Surroundings.colors.cardStroke

        Column {
            id: card

            width: parent.width
        }
    }
}
