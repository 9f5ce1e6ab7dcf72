import QtQuick
import VelmoraMac
import QtQuick.Templates as T

// The content of the updater's window, one layout for every step: headline, message, release notes or a bar, buttons.
Rectangle {
    id: root

    required property UpdateWindow updateWindow

    // Too narrow for all buttons in one row: the skip button is above the others.
    readonly property bool stacksButtons: skip.visible && skip.width + buttons.width + 60 > width

    implicitWidth: 500
    // As tall as its step: notes are seen through a pane, of which a few lines are enough.
    readonly property real textBottom: Math.max(icon.y + icon.height, message.y + message.height)
    readonly property real contentBottom: updateWindow.notes !== "" ? message.y + message.height + 14 + Math.min(164, notes.height + 16)
                                        : updateWindow.working ? Math.max(textBottom, bar.y + bar.height) : textBottom
    readonly property real footHeight: buttons.height > 0 ? buttons.height + 14 : 0

    implicitHeight: Math.ceil(contentBottom + footHeight + (stacksButtons ? skip.height + 10 : 0) + 20)
    color: Surroundings.colors.windowBackground
    focus: true
    Accessible.role: Accessible.Dialog
    Accessible.name: updateWindow.headline
    Keys.onEscapePressed: updateWindow.close()
    Keys.onReturnPressed: updateWindow.accept()
    Keys.onEnterPressed: updateWindow.accept()

    AssetImage {
        id: icon

        anchors {
            left: parent.left
            top: parent.top
            margins: 20
        }
        width: 48
        height: 48
        name: "velmora-app-icon"
    }
    SystemText {
        id: headline

        anchors {
            left: icon.right
            leftMargin: 16
            right: parent.right
            rightMargin: 20
            top: icon.top
        }
        text: root.updateWindow.headline
        pointSize: 15
        font.bold: true
        wrapMode: Text.Wrap
        color: Surroundings.colors.label
    }
    SystemText {
        id: message

        anchors {
            left: headline.left
            right: headline.right
            top: headline.bottom
            topMargin: 6
        }
        text: root.updateWindow.message
        wrapMode: Text.Wrap
        color: Surroundings.colors.secondaryLabel
    }
    ProgressBar {
        id: bar

        objectName: "bar"
        anchors {
            left: headline.left
            right: headline.right
            top: message.bottom
            topMargin: 14
        }
        visible: root.updateWindow.working
        label: root.updateWindow.headline
        progress: root.updateWindow.progress
    }
    RoundedBox {
        anchors {
            left: headline.left
            right: headline.right
            top: message.bottom
            topMargin: 14
            bottom: buttons.top
            bottomMargin: 14 + (root.stacksButtons ? skip.height + 10 : 0)
        }
        visible: root.updateWindow.notes !== ""
        radius: 6
        color: Surroundings.colors.paneFill
        borderColor: Surroundings.colors.cardStroke

        Flickable {
            id: pane

            anchors {
                fill: parent
                margins: 8
            }
            clip: true
            contentWidth: width
            contentHeight: notes.height
            boundsBehavior: Flickable.StopAtBounds
            activeFocusOnTab: true
            Keys.onUpPressed: scroll.decrease()
            Keys.onDownPressed: scroll.increase()
            T.ScrollBar.vertical: SlimScrollBar {
                id: scroll
            }

            SystemText {
                id: notes

                width: pane.width - 12
                text: root.updateWindow.notes
                wrapMode: Text.Wrap
                color: Surroundings.colors.label
            }
        }
        FocusRing {
            shown: pane.activeFocus
            radius: 9
        }
    }
    SystemButton {
        id: skip

        anchors {
            left: root.stacksButtons ? undefined : parent.left
            leftMargin: 20
            right: root.stacksButtons ? parent.right : undefined
            rightMargin: 20
            bottom: root.stacksButtons ? buttons.top : parent.bottom
            bottomMargin: root.stacksButtons ? 10 : 20
        }
        visible: text !== ""
        text: root.updateWindow.skipTitle
        onClicked: root.updateWindow.skip()
    }
    Row {
        id: buttons

        anchors {
            right: parent.right
            bottom: parent.bottom
            margins: 20
        }
        spacing: 10

        SystemButton {
            visible: text !== ""
            text: root.updateWindow.dismissTitle
            onClicked: root.updateWindow.close()
        }
        SystemButton {
            visible: text !== ""
            text: root.updateWindow.acceptTitle
            prominent: true
            onClicked: root.updateWindow.accept()
        }
    }
}
