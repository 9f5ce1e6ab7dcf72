import QtQuick
import VelmoraMac

// A link of the history on one line, under its title.
RoundedBox {
    id: root

    required property string title
    required property string value

    implicitHeight: column.implicitHeight + 20
    radius: 12
    color: Surroundings.colors.controlFill

    Column {
        id: column

        anchors {
            left: parent.left
            right: parent.right
            top: parent.top
            margins: 10
        }
        spacing: 2

        SystemText {
            text: root.title
            pointSize: 10
            font.weight: Font.Bold
            color: Surroundings.colors.secondaryLabel
        }
        SystemText {
            width: parent.width
            // One line, and no more of a long text than can be seen: laying it out must not cost time.
            text: root.value.slice(0, 600).replace(/\s+/g, " ")
            pointSize: 11
            color: Surroundings.colors.label
            elide: Text.ElideRight
            maximumLineCount: 1
        }
    }
}
