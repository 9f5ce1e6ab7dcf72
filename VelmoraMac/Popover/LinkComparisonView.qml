import QtQuick
import VelmoraMac

// A link as it was copied over the link as it is now.
Column {
    id: root

    required property string originalText
    required property string cleanedText

    function tint(color: color, opacity: real): color {
        return Surroundings.legibleInRow(Qt.alpha(color, opacity), Surroundings.palette);
    }

    spacing: 6

    LinkPreviewRow {
        width: root.width
        caption: App.t("Before", "Vorher")
        linkText: root.originalText
        otherText: root.cleanedText
        tint: root.tint(Surroundings.palette.dangerAccent, 0.8)
        removedTint: root.tint(Surroundings.palette.dangerAccent, 1)
    }
    LinkPreviewRow {
        width: root.width
        caption: App.t("After", "Nachher")
        linkText: root.cleanedText
        otherText: root.originalText
        tint: root.tint(Surroundings.palette.successAccent, 0.9)
    }
}
