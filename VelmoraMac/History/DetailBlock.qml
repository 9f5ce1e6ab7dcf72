import QtQuick
import VelmoraMac
import QtQuick.Templates as T

// A whole text in a box under its caption. It scrolls, and parts of it can be selected and copied.
Column {
    id: root

    required property string caption
    required property string value
    property string cleanedValue // For a text before its cleaning: what is left of it.

    spacing: 6

    SystemText {
        id: title

        text: root.caption
        font.weight: Font.Bold
        color: Surroundings.colors.label
        Accessible.role: Accessible.Heading
    }
    RoundedBox {
        width: parent.width
        height: parent.height - title.height - parent.spacing
        radius: 16
        color: Surroundings.colors.textBackground
        borderColor: Surroundings.colors.cardStroke

        Flickable {
            id: scroll

            anchors {
                fill: parent
                margins: 12
            }
            clip: true
            contentWidth: width
            contentHeight: text.implicitHeight
            boundsBehavior: Flickable.StopAtBounds

            T.ScrollBar.vertical: SlimScrollBar {
                parent: scroll.parent
                x: scroll.parent.width - width - 2
                y: scroll.y
                height: scroll.height
            }

            TextEdit {
                id: text

                width: scroll.width
                text: root.value
                textFormat: TextEdit.PlainText
                font.pixelSize: 12
                color: Surroundings.colors.label
                selectionColor: Surroundings.colors.accent
                selectedTextColor: "white"
                wrapMode: TextEdit.WrapAnywhere
                readOnly: true
                selectByMouse: true
                activeFocusOnTab: true
                Accessible.role: Accessible.EditableText
                Accessible.readOnly: true
                Accessible.editable: false
                Accessible.multiLine: true
                Accessible.name: root.caption
            }
        }
        RemovedPartsHighlighter {
            document: root.cleanedValue !== "" ? text.textDocument : null
            cleanedText: root.cleanedValue
            tint: Surroundings.colors.removed
        }
        FocusRing {
            shown: text.activeFocus
            radius: 19
        }
    }
}
