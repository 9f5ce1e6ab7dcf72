import QtQuick
import VelmoraMac

// The content of the settings window: three tabs, of which `App.state.activeAppTab` is shown.
//
// The host shows it in an ordinary window of 660 by 640 points, at least 640 by 610. "Show Menu Bar Icon" posts to
// `notifications`; everything else goes to the state and to `updateController`.
Rectangle {
    id: root

    required property UpdateController updateController
    required property NotificationCenter notifications

    implicitWidth: 660
    implicitHeight: 640
    color: Surroundings.colors.windowBackground
    focus: true
    Keys.forwardTo: [pages.item]

    Shortcut {
        sequences: [StandardKey.Close, StandardKey.Cancel]
        onActivated: root.Window.window.close()
    }
    SegmentedPicker {
        id: tabs

        anchors.horizontalCenter: parent.horizontalCenter
        y: 18
        z: 1
        height: 28
        turnsPages: true
        label: App.t("Settings", "Einstellungen")
        values: [Velmora.AppTab.general, Velmora.AppTab.cleaning, Velmora.AppTab.history]
        titles: [App.t("General", "Allgemein"), App.t("Cleaning", "Bereinigung"), App.t("History", "Verlauf")]
        symbols: ["switch.2", "wand.and.sparkles", "clock.arrow.circlepath"]
        current: App.state.activeAppTab
        onChosen: tab => App.state.activeAppTab = tab
    }
    RoundedBox {
        anchors {
            fill: parent
            margins: 18
            topMargin: 32
        }
        radius: 10
        color: Surroundings.colors.paneFill
        borderColor: Surroundings.colors.cardStroke

        Loader {
            id: pages

            anchors {
                fill: parent
                margins: 1
                topMargin: 18
            }
            sourceComponent: App.state.activeAppTab === Velmora.AppTab.general ? general
                : (App.state.activeAppTab === Velmora.AppTab.cleaning ? cleaning : history)
        }
    }
    Component {
        id: general

        GeneralSettings {
            updateController: root.updateController
            notifications: root.notifications
        }
    }
    Component {
        id: cleaning

        CleaningSettings { }
    }
    Component {
        id: history

        HistorySettings { }
    }
}
