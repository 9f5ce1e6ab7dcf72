import QtQuick
import VelmoraMac

// A row of a form: a label with an optional note below it, and a control at the end.
Item {
    id: root

    property string label
    property string note
    // A failure the user should know of, in the note's place below it.
    property string problem
    default property alias control: trailing.data
    readonly property bool isFirst: parent !== null && parent.children[0] === root

    width: parent?.width ?? 0
    implicitHeight: Math.max(38, texts.implicitHeight + 20)

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
        id: texts

        anchors {
            left: parent.left
            leftMargin: 10
            right: trailing.left
            rightMargin: trailing.width > 0 ? 12 : 0
            verticalCenter: parent.verticalCenter
        }
        spacing: 3

        SystemText {
            visible: root.label !== ""
            width: parent.width
            text: root.label
            color: Surroundings.colors.label
            wrapMode: Text.Wrap
        }
        FormNote {
            visible: root.note !== ""
            width: parent.width
            text: root.note
        }
        FormNote {
            visible: root.problem !== ""
            width: parent.width
            text: root.problem
            color: Surroundings.darkAppearance ? Qt.lighter(Surroundings.colors.red, 1.25)
                                               : Qt.darker(Surroundings.colors.red, 1.45)
        }
    }
    Row {
        id: trailing

        anchors {
            right: parent.right
            rightMargin: 10
            verticalCenter: parent.verticalCenter
        }
    }
}
