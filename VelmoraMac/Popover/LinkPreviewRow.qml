import QtQuick
import VelmoraMac

// One link on one line under its caption.
RoundedBox {
    id: root

    required property string caption
    required property string linkText
    required property color tint

    implicitHeight: column.implicitHeight + 16
    radius: 11
    color: Surroundings.palette.linkRowFill

    Column {
        id: column

        anchors {
            left: parent.left
            right: parent.right
            top: parent.top
            margins: 8
        }
        spacing: 4

        SystemText {
            text: root.caption.toUpperCase()
            pointSize: 8
            font.weight: Font.Bold
            font.letterSpacing: 0.4
            color: root.tint
        }
        SystemText {
            width: parent.width
            // One line, and no more of a long text than can be seen: laying it out must not cost time.
            text: root.linkText.slice(0, 400).replace(/\s+/g, " ")
            pointSize: 9
            font.weight: Font.DemiBold
            color: Surroundings.palette.primaryText
            elide: Text.ElideRight
            maximumLineCount: 1
        }
    }
}
