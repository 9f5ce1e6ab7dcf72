import VelmoraMac
import QtQuick.Layouts

// The popover's three counters.
RowLayout {
    component ShareTile: StatTile {
        Layout.fillWidth: true
        Layout.preferredWidth: 1 // Equal shares.
    }

    spacing: 8

    ShareTile {
        label: App.t("Links", "Links")
        value: App.state.totalCleaned
        tint: Surroundings.legibleLarge(Surroundings.palette.infoAccent, Surroundings.palette)
    }
    ShareTile {
        label: App.t("Removed", "Entfernt")
        value: App.state.totalTrackersRemoved
        tint: Surroundings.legibleLarge(Surroundings.palette.dangerAccent, Surroundings.palette)
    }
    ShareTile {
        label: App.t("Heute", "Heute")
        value: App.state.cleanedToday
        tint: Surroundings.legibleLarge(Surroundings.palette.successAccent, Surroundings.palette)
    }
}
