import QtQuick
import VelmoraMac

// The popover's main card: a seal, a title and one line with the cleaner's status.
RoundedBox {
    id: root

    property bool glow: false

    readonly property bool paused: !App.state.autoCleanEnabled
    readonly property bool hasResult: App.state.hasLastResult
    readonly property bool cleaned: hasResult && App.state.lastResult.didChange
    readonly property string symbolName: paused ? "pause.circle.fill"
                                                : (cleaned ? "checkmark.circle.fill" : "checkmark.shield.fill")
    readonly property string title: paused ? App.t("Paused", "Pausiert")
                                           : (cleaned ? App.t("Cleaned", "Bereinigt") : App.t("Protected", "Geschützt"))
    readonly property string microSymbolName: paused ? "pause.fill" : (cleaned ? "sparkles" : "lock.fill")
    readonly property string subtitle: {
        if (paused)
            return App.t("Cleaning is paused", "Bereinigung pausiert");
        if (hasResult)
            return LocalizedStrings.removedCount(App.state.lastResult.removedCount, App.state.language);
        return App.t("Local on this Mac", "Lokal auf diesem Mac");
    }
    readonly property color tint: shownTint.value
    readonly property color wantedTint: paused ? Surroundings.palette.warningText
                                             : (cleaned ? Surroundings.palette.successAccent : Surroundings.palette.infoAccent)
    readonly property color microTint: Surroundings.legibleOnLight(tint, Surroundings.palette)
    // Where the pointer is, -1 to 1 from the middle; in the middle while it is elsewhere.
    readonly property point pointer: hover.hovered && width > 0 && height > 0
                                     ? Qt.point(2 * hover.point.position.x / width - 1,
                                                2 * hover.point.position.y / height - 1)
                                     : Qt.point(0, 0)

    radius: 21
    color: Surroundings.cardColor
    borderColor: Surroundings.palette.cardStroke

    SpringColor {
        id: shownTint

        to: root.wantedTint
    }
    HoverHandler {
        id: hover
    }

    RippleField {
        anchors.fill: parent
        cornerRadius: root.radius
        centre: Qt.point(seal.x + seal.width / 2, seal.y + seal.height / 2)
        color: Surroundings.palette.primaryText
        tint: root.tint
    }
    StatusSealIcon {
        id: seal

        objectName: "seal"
        x: 28
        anchors.verticalCenter: parent.verticalCenter
        symbolName: root.symbolName
        tint: Surroundings.legibleInGlow(root.tint, Surroundings.palette)
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
            elides: true
            pointSize: 22
            color: Surroundings.palette.primaryText
        }
        Row {
            opacity: 0.92
            spacing: 4

            FadingSymbol {
                anchors.verticalCenter: parent.verticalCenter
                symbolName: root.microSymbolName
                pointSize: 8
                color: root.microTint
            }
            FadingText {
                objectName: "subtitle"
                anchors.verticalCenter: parent.verticalCenter
                text: root.subtitle
                pointSize: 9
                weight: Font.DemiBold
                color: root.microTint
            }
        }
    }
}
