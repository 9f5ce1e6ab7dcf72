import QtQuick
import VelmoraMac

// The popover's hero: a seal, a title and one line that says how the cleaner stands.
Rectangle {
    id: root

    required property AppState appState
    required property velmoraThemePalette themePalette
    property bool glow: false

    readonly property bool paused: !appState.autoCleanEnabled
    readonly property bool hasResult: appState.hasLastResult
    readonly property bool cleaned: hasResult && appState.lastResult.cleanedText !== appState.lastResult.originalText
    readonly property string symbolName: paused ? "pause.circle.fill"
                                                : (cleaned ? "checkmark.circle.fill" : "checkmark.shield.fill")
    readonly property string title: paused ? t("Paused", "Pausiert")
                                           : (cleaned ? t("Cleaned", "Bereinigt") : t("Protected", "Geschützt"))
    readonly property string microSymbolName: paused ? "pause.fill" : (cleaned ? "sparkles" : "lock.fill")
    readonly property string subtitle: {
        if (paused)
            return t("Cleaning is paused", "Bereinigung pausiert");
        if (hasResult)
            return LocalizedStrings.removedCount(appState.lastResult.removedCount, appState.language);
        return t("Local on this Mac", "Lokal auf diesem Mac");
    }
    readonly property color tint: paused ? themePalette.warningText
                                         : (cleaned ? themePalette.successAccent : themePalette.infoAccent)
    readonly property color microTint: Surroundings.legible(tint, themePalette)
    // Where the pointer is, -1 to 1 from the middle; in the middle while it is elsewhere.
    readonly property point pointer: hover.hovered && width > 0 && height > 0
                                     ? Qt.point(2 * hover.point.position.x / width - 1,
                                                2 * hover.point.position.y / height - 1)
                                     : Qt.point(0, 0)

    function t(english: string, german: string): string {
        return LocalizedStrings.choose(english, german, appState.language);
    }

    radius: 21
    color: themePalette.cardFill
    border.color: themePalette.cardStroke

    HoverHandler {
        id: hover
    }

    RippleField {
        anchors.fill: parent
        cornerRadius: root.radius
        centre: Qt.point(seal.x + seal.width / 2, seal.y + seal.height / 2)
        color: root.themePalette.primaryText
        tint: root.tint
    }
    StatusSealIcon {
        id: seal

        x: 28
        anchors.verticalCenter: parent.verticalCenter
        symbolName: root.symbolName
        themePalette: root.themePalette
        tint: root.tint
        glow: root.glow
        pointer: root.pointer
    }
    Column {
        anchors {
            left: seal.right
            leftMargin: 24
            right: parent.right
            rightMargin: 14
            verticalCenter: parent.verticalCenter
        }
        spacing: 3

        FadingText {
            width: parent.width
            text: root.title
            pointSize: 22
            color: root.themePalette.primaryText
        }
        Row {
            opacity: 0.92
            spacing: 4

            SymbolImage {
                anchors.verticalCenter: parent.verticalCenter
                symbolName: root.microSymbolName
                pointSize: 8
                color: root.microTint
            }
            SystemText {
                anchors.verticalCenter: parent.verticalCenter
                text: root.subtitle
                pointSize: 9
                font.weight: Font.DemiBold
                color: root.microTint
            }
        }
    }
}
