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
        text: App.t("Copy Clean Link", "Clean-Link kopieren")
        onClicked: App.state.copyCleanedLink(root.entry)
    }
    SystemButton {
        text: App.t("Restore Original", "Original")
        onClicked: App.state.restoreOriginalLink(root.entry)
    }
    SystemButton {
        visible: root.offersDetails
        text: App.t("Details", "Details")
        onClicked: root.detailsRequested()
    }
}
