import QtQuick
import VelmoraMac

// Shows an entry's details in a window of their own above the settings window.
Window {
    id: root

    required property cleanHistoryEntry entry
    required property AppState appState

    signal dismissed

    width: 720
    height: 560
    minimumWidth: width
    maximumWidth: width
    minimumHeight: height
    maximumHeight: height
    title: LocalizedStrings.choose("Full Link Details", "Link-Details", appState.language)
    flags: Qt.Dialog
    modality: Qt.WindowModal
    color: Surroundings.colors.windowBackground
    visible: true
    onClosing: dismissed()

    HistoryEntryDetailView {
        anchors.fill: parent
        focus: true
        entry: root.entry
        appState: root.appState
        onDismissed: root.dismissed()
    }
}
