import QtQuick
import VelmoraMac

// A small card with one counter.
RoundedBox {
    id: root

    required property string label
    required property double value
    required property color tint

    implicitHeight: column.implicitHeight + 18
    radius: 15
    color: Surroundings.cardColor
    borderColor: Surroundings.palette.cardStroke

    Column {
        id: column

        anchors {
            left: parent.left
            right: parent.right
            top: parent.top
            margins: 9
        }
        spacing: 3

        SystemText {
            width: parent.width
            text: root.label.toUpperCase()
            Accessible.name: root.label // As it is spoken: capitals may be read letter by letter.
            pointSize: 8
            font.weight: Font.DemiBold
            font.letterSpacing: 0.3
            color: Surroundings.legible(Surroundings.palette.secondaryText, Surroundings.palette)
            elide: Text.ElideRight
        }
        NumericText {
            objectName: "value"
            number: root.value
            pointSize: 20
            maximumWidth: column.width
            color: root.tint
        }
    }
}
