import QtQuick
import VelmoraMac

// A row of a form: a label with its control at the end, or a control alone, and a note below it.
Item {
    id: root

    property string label
    property string note
    property bool noteFirst: false // The note stands above the control.
    // A failure the user should know of, below everything else.
    property string problem
    default property alias control: trailing.data
    readonly property bool isFirst: parent !== null && parent.children[0] === root

    width: parent?.width ?? 0
    implicitHeight: Math.max(38, rows.implicitHeight + 20)

    RoundedBox {
        anchors {
            left: parent.left
            right: parent.right
            leftMargin: 10
            rightMargin: 10
        }
        visible: !root.isFirst
        height: 1
        color: Surroundings.colors.separator
    }
    Column {
        id: rows

        anchors {
            left: parent.left
            leftMargin: 10
            right: parent.right
            rightMargin: 10
            verticalCenter: parent.verticalCenter
        }
        spacing: 5

        FormNote {
            visible: root.noteFirst && root.note !== ""
            width: parent.width
            text: root.noteFirst ? root.note : ""
        }
        Item {
            width: parent.width
            height: Math.max(root.label !== "" ? title.implicitHeight : 0, trailing.height)

            SystemText {
                id: title

                anchors.verticalCenter: parent.verticalCenter
                visible: root.label !== ""
                width: trailing.width > 0 ? trailing.x - 12 : parent.width
                text: root.label
                color: Surroundings.colors.label
                wrapMode: Text.Wrap
            }
            Row {
                id: trailing

                anchors.verticalCenter: parent.verticalCenter
                x: root.label !== "" ? parent.width - width : 0
            }
        }
        FormNote {
            visible: !root.noteFirst && root.note !== ""
            width: parent.width
            text: root.noteFirst ? "" : root.note
        }
        FormNote {
            visible: root.problem !== ""
            width: parent.width
            text: root.problem
            color: Surroundings.colors.problem
        }
    }
}
