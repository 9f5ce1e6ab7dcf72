import QtQuick
import VelmoraMac

// Both links of a cleaning in full, in a sheet of 720 by 560 points. `dismissed()` asks to be closed.
Rectangle {
    id: root

    required property cleanHistoryEntry entry

    signal dismissed

    function closes(event: var): bool {
        return event.matches(StandardKey.Close) || event.matches(StandardKey.Cancel);
    }

    implicitWidth: 720
    implicitHeight: 560
    color: Surroundings.colors.windowBackground
    // Else the window below, whose shortcuts these are as well, would close instead.
    Keys.onShortcutOverride: event => event.accepted = root.closes(event)
    Keys.onPressed: event => {
        if (root.closes(event))
            root.dismissed();
    }

    Item {
        id: header

        x: 22
        y: 22
        width: root.width - 44
        height: Math.max(title.height, close.height)

        SystemText {
            id: title

            anchors.verticalCenter: parent.verticalCenter
            text: App.t("Full Link Details", "Link-Details")
            pointSize: 22
            font.weight: Font.Bold
            color: Surroundings.colors.label
            Accessible.role: Accessible.Heading
        }
        SystemButton {
            id: close

            anchors {
                right: parent.right
                verticalCenter: parent.verticalCenter
            }
            text: App.t("Close", "Schließen")
            focus: true
            onClicked: root.dismissed()
        }
    }
    Column {
        id: blocks

        readonly property real blockHeight: (height - spacing) / 2

        anchors {
            top: header.bottom
            topMargin: 18
            bottom: buttons.top
            bottomMargin: 18
            left: header.left
            right: header.right
        }
        spacing: 18

        DetailBlock {
            width: parent.width
            height: blocks.blockHeight
            caption: App.t("Before", "Vorher") + LocalizedStrings.beginningNote(root.entry.originalBytes, App.state.language)
            value: root.entry.originalText
            cleanedValue: root.entry.cleanedText
        }
        DetailBlock {
            width: parent.width
            height: blocks.blockHeight
            caption: App.t("After", "Nachher") + LocalizedStrings.beginningNote(root.entry.cleanedBytes, App.state.language)
            value: root.entry.cleanedText
        }
    }
    HistoryEntryButtons {
        id: buttons

        anchors {
            left: header.left
            bottom: parent.bottom
            bottomMargin: 22
        }
        entry: root.entry
    }
}
