import QtQuick
import VelmoraMac

// The popover's first row: who we are, whether we clean, and the switch for it.
Item {
    id: root

    required property AppState appState
    required property velmoraThemePalette themePalette

    function t(english: string, german: string): string {
        return LocalizedStrings.choose(english, german, appState.language);
    }

    implicitHeight: 34

    AssetImage {
        id: icon

        width: 34
        height: 34
        name: "velmora-app-icon"
    }
    Column {
        anchors {
            left: icon.right
            leftMargin: 10
            verticalCenter: parent.verticalCenter
        }

        SystemText {
            text: root.t("Velmora", "Velmora")
            pointSize: 15
            font.weight: Font.DemiBold
            color: root.themePalette.primaryText
        }
        SystemText {
            text: root.appState.autoCleanEnabled ? root.t("Active", "Aktiv") : root.t("Paused", "Pausiert")
            pointSize: 10
            font.weight: Font.Medium
            color: Surroundings.legible(root.appState.autoCleanEnabled ? root.themePalette.successAccent
                                                                       : root.themePalette.warningText,
                                        root.themePalette)
        }
    }
    PremiumSwitchToggleStyle {
        anchors {
            right: parent.right
            verticalCenter: parent.verticalCenter
        }
        text: root.t("Clean copied links", "Kopierte Links bereinigen")
        themePalette: root.themePalette
        checked: root.appState.autoCleanEnabled
        onToggled: root.appState.autoCleanEnabled = checked
    }
}
