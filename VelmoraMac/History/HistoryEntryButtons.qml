import QtQuick
import VelmoraMac

// What can be done about an entry of the history.
Row {
    id: root

    required property cleanHistoryEntry entry
    property bool offersDetails: false

    signal detailsRequested

    spacing: 8

    SystemButton {
        enabled: root.entry.cleanedBytes === 0
        text: App.t("Copy Clean Link", "Clean-Link kopieren")
        onClicked: App.state.copyCleanedLink(root.entry)
    }
    SystemButton {
        enabled: root.entry.originalBytes === 0
        text: App.t("Restore Original", "Original")
        onClicked: App.state.restoreOriginalLink(root.entry)
    }
    SystemButton {
        visible: root.offersDetails
        text: App.t("Details", "Details")
        onClicked: root.detailsRequested()
    }
}
