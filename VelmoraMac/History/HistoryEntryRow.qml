import QtQuick
import VelmoraMac

// One cleaning in the history, with what can be done about it.
RoundedBox {
    id: root

    required property cleanHistoryEntry entry
    property bool showingDetails: false

    implicitHeight: column.implicitHeight + 28
    radius: 18
    color: Surroundings.colors.cardFill
    borderColor: Surroundings.colors.cardStroke
    // Newer Qt shows each row of a list to screen readers, named or not.
    Accessible.role: Accessible.ListItem
    Accessible.name: count.text

    Column {
        id: column

        anchors {
            left: parent.left
            right: parent.right
            top: parent.top
            margins: 14
        }
        spacing: 10

        Item {
            width: parent.width
            height: count.height

            SymbolImage {
                id: sparkles

                anchors.verticalCenter: parent.verticalCenter
                symbolName: "sparkles"
                pointSize: 12
                color: count.color
            }
            SystemText {
                id: count

                anchors {
                    left: sparkles.right
                    leftMargin: 6
                }
                text: LocalizedStrings.removedCount(root.entry.removedCount, App.state.language)
                pointSize: 12
                font.weight: Font.DemiBold
                color: Surroundings.colors.label
            }
            SystemText {
                anchors {
                    right: parent.right
                    verticalCenter: parent.verticalCenter
                }
                text: ViewDates.mediumDateShortTime(root.entry.cleanedAt, App.state.language)
                pointSize: 10
                color: Surroundings.colors.secondaryLabel
            }
        }
        Column {
            width: parent.width
            spacing: 4

            HistoryLine {
                width: parent.width
                title: App.t("Before", "Vorher") + LocalizedStrings.beginningNote(root.entry.originalBytes, App.state.language)
                value: root.entry.originalText
                otherValue: root.entry.cleanedText
                removedTint: Surroundings.colors.removed
            }
            HistoryLine {
                width: parent.width
                title: App.t("After", "Nachher") + LocalizedStrings.beginningNote(root.entry.cleanedBytes, App.state.language)
                value: root.entry.cleanedText
                otherValue: root.entry.originalText
            }
        }
        SystemText {
            width: parent.width
            text: root.entry.namesText
            pointSize: 10
            color: Surroundings.colors.secondaryLabel
            elide: Text.ElideRight
            wrapMode: Text.Wrap
            maximumLineCount: 3
        }
        HistoryEntryButtons {
            entry: root.entry
            offersDetails: true
            onDetailsRequested: root.showingDetails = true
        }
    }
    Loader {
        active: root.showingDetails
        sourceComponent: HistoryEntrySheet {
            entry: root.entry
            onDismissed: root.showingDetails = false
        }
    }
}
