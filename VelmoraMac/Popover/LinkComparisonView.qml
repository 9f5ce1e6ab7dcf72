import QtQuick
import VelmoraMac

// A link as it was copied over the link as it is now.
Column {
    id: root

    required property AppState appState
    required property string originalText
    required property string cleanedText
    required property velmoraThemePalette themePalette

    function t(english: string, german: string): string {
        return LocalizedStrings.choose(english, german, appState.language);
    }

    function tint(color: color, opacity: real): color {
        return Surroundings.legibleInRow(Qt.rgba(color.r, color.g, color.b, opacity), themePalette);
    }

    spacing: 6

    LinkPreviewRow {
        width: root.width
        caption: root.t("Before", "Vorher")
        linkText: root.originalText
        tint: root.tint(root.themePalette.dangerAccent, 0.8)
        themePalette: root.themePalette
    }
    LinkPreviewRow {
        width: root.width
        caption: root.t("After", "Nachher")
        linkText: root.cleanedText
        tint: root.tint(root.themePalette.successAccent, 0.9)
        themePalette: root.themePalette
    }
}
