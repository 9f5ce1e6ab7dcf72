import QtQuick
import VelmoraMac

// The popover's card with the last cleaned link.
RoundedBox {
    id: root

    readonly property bool comparing: App.state.autoCleanEnabled && App.state.hasLastResult
    // The card's text while there is nothing to compare.
    readonly property string message: App.state.autoCleanEnabled ? App.t("Waiting for link", "Warte auf Link")
                                                                 : App.t("Cleaning is paused", "Bereinigung pausiert")
    readonly property color quietText: Surroundings.legible(Surroundings.palette.secondaryText, Surroundings.palette)

    signal openHistory

    implicitHeight: column.implicitHeight + 22
    radius: 18
    color: Surroundings.palette.cardFill
    borderColor: Surroundings.palette.cardStroke

    Column {
        id: column

        anchors {
            left: parent.left
            right: parent.right
            top: parent.top
            margins: 11
        }
        spacing: 4

        Item {
            width: parent.width
            height: historyButton.height

            SymbolImage {
                id: clock

                anchors.verticalCenter: parent.verticalCenter
                symbolName: "clock.arrow.circlepath"
                pointSize: 12
                color: root.quietText
            }
            SystemText {
                anchors {
                    left: clock.right
                    leftMargin: 6
                    verticalCenter: parent.verticalCenter
                }
                text: App.t("Last", "Zuletzt")
                pointSize: 12
                font.weight: Font.DemiBold
                color: Surroundings.palette.primaryText
            }
            PremiumButtonStyle {
                id: historyButton

                anchors.right: parent.right
                text: App.t("Verlauf", "Verlauf")
                onClicked: root.openHistory()
            }
        }
        SystemText {
            visible: !root.comparing
            height: 18
            verticalAlignment: Text.AlignVCenter
            text: root.message
            pointSize: 11
            font.weight: Font.Medium
            color: root.quietText
        }
        Loader {
            active: root.comparing
            visible: active
            width: parent.width
            sourceComponent: LinkComparisonView {
                originalText: App.state.lastResult.originalText
                cleanedText: App.state.lastResult.cleanedText
            }
        }
    }
}
