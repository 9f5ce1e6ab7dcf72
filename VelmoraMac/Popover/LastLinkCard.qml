import QtQuick
import VelmoraMac

// The popover's card with the last cleaned link.
RoundedBox {
    id: root

    // How far the window has grown to hold a comparison, 0 to 1.
    property real growth: 1
    // How much of the comparison is seen, 0 to 1. In a window that grows it appears with the room for it.
    readonly property real revealed: Math.max(0, Math.min(1, reveal.value, growth))
    readonly property bool comparing: App.state.autoCleanEnabled && App.state.hasLastResult
    // The card's text while there is nothing to compare.
    readonly property string message: App.state.autoCleanEnabled ? App.t("Waiting for link", "Warte auf Link")
                                                                 : App.t("Cleaning is paused", "Bereinigung pausiert")
    readonly property color quietText: Surroundings.legible(Surroundings.palette.secondaryText, Surroundings.palette)

    property string words // The message, kept while it gives way to a comparison.

    signal openHistory

    // Asks the state: the properties above may change one after the other.
    function keepWords() {
        if (!App.state.autoCleanEnabled || !App.state.hasLastResult)
            words = root.message;
    }

    onComparingChanged: {
        if (comparing && growth < 1)
            reveal.jump(1);
        keepWords();
    }
    onMessageChanged: keepWords()
    Component.onCompleted: keepWords()
    implicitHeight: column.implicitHeight + 22
    radius: 18
    color: Surroundings.cardColor
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
        Item {
            width: parent.width
            height: message.height + root.revealed * (comparison.height - message.height)
            clip: reveal.moving || root.growth < 1

            FadingText {
                id: message

                height: 18
                visible: opacity > 0
                opacity: 1 - root.revealed
                text: root.words
                pointSize: 11
                weight: Font.Medium
                color: root.quietText
            }
            Loader {
                id: comparison

                active: root.comparing || root.revealed > 0
                visible: active
                opacity: root.revealed
                width: parent.width
                sourceComponent: LinkComparisonView {
                    originalText: App.state.lastResult.originalText
                    cleanedText: App.state.lastResult.cleanedText
                }
            }
        }
    }
    SpringValue {
        id: reveal

        to: root.comparing ? 1 : 0
        response: 0.42
        dampingFraction: 0.86
    }
}
