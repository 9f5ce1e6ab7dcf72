import QtQuick
import VelmoraMac
import QtQuick.Layouts

// The popover's three counters.
RowLayout {
    component HoverTile: PremiumHoverModifier {
        id: lifted

        required property string label
        required property double value
        required property color tint

        implicitHeight: tile.implicitHeight
        Layout.fillWidth: true
        Layout.preferredWidth: 1 // Equal shares.

        StatTile {
            id: tile

            anchors.fill: parent
            label: lifted.label
            value: lifted.value
            tint: Surroundings.legibleLarge(lifted.tint, Surroundings.palette)
        }
    }

    spacing: 8

    HoverTile {
        label: App.t("Links", "Links")
        value: App.state.totalCleaned
        tint: Surroundings.palette.infoAccent
    }
    HoverTile {
        label: App.t("Removed", "Entfernt")
        value: App.state.totalTrackersRemoved
        tint: Surroundings.palette.dangerAccent
    }
    HoverTile {
        label: App.t("Heute", "Heute")
        value: App.state.cleanedToday
        tint: Surroundings.palette.successAccent
    }
}
