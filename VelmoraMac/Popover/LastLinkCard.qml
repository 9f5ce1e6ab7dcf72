import QtQuick
import VelmoraMac

// The popover's card with the last cleaned link.
Rectangle {
    id: root

    required property AppState appState
    required property velmoraThemePalette themePalette
    readonly property bool comparing: appState.autoCleanEnabled && appState.hasLastResult
    // What stands in the card while there is nothing to compare.
    readonly property string message: appState.autoCleanEnabled ? t("Waiting for link", "Warte auf Link")
                                                                : t("Cleaning is paused", "Bereinigung pausiert")

    readonly property color quietText: Surroundings.legible(themePalette.secondaryText, themePalette)

    signal openHistory

    function t(english: string, german: string): string {
        return LocalizedStrings.choose(english, german, appState.language);
    }

    implicitHeight: column.implicitHeight + 22
    radius: 18
    color: themePalette.cardFill
    border.color: themePalette.cardStroke

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
                text: root.t("Last", "Zuletzt")
                pointSize: 12
                font.weight: Font.DemiBold
                color: root.themePalette.primaryText
            }
            PremiumButtonStyle {
                id: historyButton

                anchors.right: parent.right
                text: root.t("Verlauf", "Verlauf")
                themePalette: root.themePalette
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
                appState: root.appState
                originalText: root.appState.lastResult.originalText
                cleanedText: root.appState.lastResult.cleanedText
                themePalette: root.themePalette
            }
        }
    }
}
