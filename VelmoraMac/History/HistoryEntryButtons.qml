import QtQuick
import VelmoraMac

// What can be done about an entry of the history.
Row {
    id: root

    required property cleanHistoryEntry entry
    required property AppState appState
    property bool offersDetails: false

    signal detailsRequested

    function t(english: string, german: string): string {
        return LocalizedStrings.choose(english, german, appState.language);
    }

    spacing: 8

    SystemButton {
        text: root.t("Copy Clean Link", "Clean-Link kopieren")
        onClicked: root.appState.copyCleanedLink(root.entry)
    }
    SystemButton {
        text: root.t("Restore Original", "Original")
        onClicked: root.appState.restoreOriginalLink(root.entry)
    }
    SystemButton {
        visible: root.offersDetails
        text: root.t("Details", "Details")
        onClicked: root.detailsRequested()
    }
}
