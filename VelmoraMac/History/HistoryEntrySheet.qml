import QtQuick
import VelmoraMac

// Shows an entry's details in a window of their own above the settings window.
Window {
    id: root

    required property cleanHistoryEntry entry

    signal dismissed

    width: 720
    height: 560
    minimumWidth: width
    maximumWidth: width
    minimumHeight: height
    maximumHeight: height
    title: App.t("Full Link Details", "Link-Details")
    flags: Qt.Dialog
    modality: Qt.WindowModal
    color: Surroundings.colors.windowBackground
    visible: true
    onClosing: dismissed()

    HistoryEntryDetailView {
        anchors.fill: parent
        entry: root.entry
        onDismissed: root.dismissed()
    }
}
