import QtQuick
import VelmoraMac

// The content of the settings window: three tabs, of which `appState.activeAppTab` is shown.
//
// The host shows it in an ordinary window of 660 by 640 points, at least 640 by 610. "Show Menu Bar Icon" posts
// "VelmoraRestoreMenuBarIcon" to `notifications`; everything else goes to `appState` and `updateController`.
Rectangle {
    id: root

    required property AppState appState
    required property UpdateController updateController
    required property NotificationCenter notifications

    function t(english: string, german: string): string {
        return LocalizedStrings.choose(english, german, appState.language);
    }

    implicitWidth: 660
    implicitHeight: 640
    color: Surroundings.colors.windowBackground

    SegmentedPicker {
        id: tabs

        anchors.horizontalCenter: parent.horizontalCenter
        y: 18
        z: 1
        height: 28
        turnsPages: true
        label: root.t("Settings", "Einstellungen")
        titles: [root.t("General", "Allgemein"), root.t("Cleaning", "Bereinigung"), root.t("History", "Verlauf")]
        symbols: ["switch.2", "wand.and.sparkles", "clock.arrow.circlepath"]
        currentIndex: root.appState.activeAppTab
        onChosen: index => root.appState.activeAppTab = index
    }
    Rectangle {
        anchors {
            fill: parent
            margins: 18
            topMargin: 32
        }
        radius: 10
        color: Surroundings.colors.paneFill
        border.color: Surroundings.colors.cardStroke

        Loader {
            anchors {
                fill: parent
                margins: 1
                topMargin: 18
            }
            sourceComponent: root.appState.activeAppTab === Velmora.AppTab.general ? general
                : (root.appState.activeAppTab === Velmora.AppTab.cleaning ? cleaning : history)
        }
    }
    Component {
        id: general

        GeneralSettings {
            appState: root.appState
            updateController: root.updateController
            notifications: root.notifications
        }
    }
    Component {
        id: cleaning

        CleaningSettings {
            appState: root.appState
        }
    }
    Component {
        id: history

        HistorySettings {
            appState: root.appState
        }
    }
}
