import QtQuick
import VelmoraMac

// The popover's first row: name, status, and the switch for cleaning.
Item {
    function takeKeyboard() {
        cleaningSwitch.forceActiveFocus(Qt.TabFocusReason);
    }

    implicitHeight: 34

    SpringColor {
        id: tint

        to: App.state.autoCleanEnabled ? Surroundings.palette.successAccent : Surroundings.palette.warningText
    }
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
            text: App.t("Velmora", "Velmora")
            pointSize: 15
            font.weight: Font.DemiBold
            color: Surroundings.palette.primaryText
        }
        FadingText {
            text: App.state.autoCleanEnabled ? App.t("Active", "Aktiv") : App.t("Paused", "Pausiert")
            pointSize: 10
            weight: Font.Medium
            color: Surroundings.legibleOnPanel(tint.value, Surroundings.palette)
        }
    }
    PremiumSwitchToggleStyle {
        id: cleaningSwitch

        anchors {
            right: parent.right
            verticalCenter: parent.verticalCenter
        }
        text: App.t("Clean copied links", "Kopierte Links bereinigen")
        checked: App.state.autoCleanEnabled
        onToggled: App.state.autoCleanEnabled = checked
    }
}
