import QtQuick
import VelmoraMac
import QtQuick.Layouts

// The popover's three counters.
RowLayout {
    id: root

    required property AppState appState
    required property velmoraThemePalette themePalette

    function t(english: string, german: string): string {
        return LocalizedStrings.choose(english, german, appState.language);
    }

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
            tint: Surroundings.legibleLarge(lifted.tint, root.themePalette)
            themePalette: root.themePalette
        }
    }

    spacing: 8

    HoverTile {
        label: root.t("Links", "Links")
        value: root.appState.totalCleaned
        tint: root.themePalette.infoAccent
    }
    HoverTile {
        label: root.t("Removed", "Entfernt")
        value: root.appState.totalTrackersRemoved
        tint: root.themePalette.dangerAccent
    }
    HoverTile {
        label: root.t("Heute", "Heute")
        value: root.appState.cleanedToday
        tint: root.themePalette.successAccent
    }
}
