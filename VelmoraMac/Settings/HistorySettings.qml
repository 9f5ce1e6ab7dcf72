import QtQuick
import VelmoraMac
import QtQuick.Templates as T

// The settings' history tab: the latest cleanings, newest first.
Item {
    id: root

    readonly property bool isEmpty: App.state.historyEntries.length === 0

    Keys.onPressed: event => keys.press(event)

    ScrollKeys {
        id: keys

        view: list
    }

    Item {
        id: header

        x: 16
        y: 16
        width: root.width - 32
        height: titles.height

        Column {
            id: titles

            spacing: 2

            SystemText {
                text: App.t("Link History", "Link-Verlauf")
                pointSize: 24
                font.weight: Font.Bold
                color: Surroundings.colors.label
                Accessible.role: Accessible.Heading
            }
            SystemText {
                text: App.t("Local on this Mac.", "Lokal auf diesem Mac.")
                color: Surroundings.colors.secondaryLabel
            }
        }
        SystemButton {
            anchors {
                right: parent.right
                verticalCenter: parent.verticalCenter
            }
            text: App.t("Clear History", "Verlauf leeren")
            onClicked: App.state.clearHistory()
        }
    }
    Column {
        anchors.centerIn: parent
        visible: root.isEmpty
        spacing: 8

        SymbolImage {
            anchors.horizontalCenter: parent.horizontalCenter
            symbolName: "link.badge.plus"
            pointSize: 44
            color: Surroundings.colors.secondaryLabel
        }
        SystemText {
            anchors.horizontalCenter: parent.horizontalCenter
            text: App.t("No cleaned links yet", "Noch keine Links")
            pointSize: 18
            font.weight: Font.DemiBold
            color: Surroundings.colors.label
        }
        SystemText {
            anchors.horizontalCenter: parent.horizontalCenter
            text: App.t("Cleaned links appear here.", "Bereinigte Links erscheinen hier.")
            color: Surroundings.colors.secondaryLabel
        }
    }
    ListView {
        id: list

        objectName: "historyList"

        anchors {
            fill: parent
            topMargin: header.y + header.height + 14
            leftMargin: 16
            rightMargin: 16
        }
        visible: !root.isEmpty
        clip: true
        spacing: 4
        bottomMargin: 16
        boundsBehavior: Flickable.StopAtBounds
        model: App.state.historyEntries
        delegate: HistoryEntryRow {
            required property cleanHistoryEntry modelData

            objectName: "historyRow"
            width: list.width
            entry: modelData
        }

        T.ScrollBar.vertical: SlimScrollBar {
            parent: root
            x: root.width - width
            y: list.y
            height: list.height
        }
    }
}
