import QtQuick
import VelmoraMac

// The toast that says that a copied link was cleaned, or with a button warns that it has trackers.
//
// The host shows it in a borderless translucent window of 342 by 86 points, 342 by 118 with the button. It plays its
// entrance when it is created. `cleanRequested()` is emitted for every press of the button.
Item {
    id: root

    required property cleaningResult result
    // Whether there is something to decide: shows the button.
    required property bool offersCleaning

    signal cleanRequested

    readonly property string title: offersCleaning ? App.t("Trackers found", "Tracker gefunden")
                                                   : App.t("Cleaned", "Bereinigt")
    readonly property string subtitle: LocalizedStrings.removedCount(result.removedCount, App.state.language)
    // The window's, where it cannot be translucent.
    readonly property color ground: background.material
    // A toast that cannot be blended with the desktop does not fade in.
    property bool entered: !Surroundings.blendsWindows
    property bool shine: false

    Accessible.role: Accessible.AlertMessage
    Accessible.name: title + ", " + subtitle
    implicitWidth: 342
    implicitHeight: offersCleaning ? 118 : 86

    Component.onCompleted: {
        entered = true;
        shine = true;
    }

    StaggerRevealModifier {
        objectName: "entrance"
        anchors.fill: parent
        shown: root.entered
        offsetY: -12
        hiddenScale: 0.9
        transformOrigin: Item.TopRight
        response: 0.5
        dampingFraction: 0.78

        ToastBackgroundModifier {
            id: background

            anchors.fill: parent
            warning: root.offersCleaning
        }
        Row {
            anchors {
                left: parent.left
                right: parent.right
                leftMargin: 15
                rightMargin: 15
                verticalCenter: parent.verticalCenter
            }
            spacing: 13

            ToastIcon {
                anchors.verticalCenter: parent.verticalCenter
                shine: root.shine
            }
            Column {
                anchors.verticalCenter: parent.verticalCenter
                width: parent.width - 65
                spacing: 2

                SystemText {
                    width: parent.width
                    text: root.title
                    pointSize: 16
                    font.weight: Font.Bold
                    color: Qt.rgba(0, 0, 0, 0.88)
                    elide: Text.ElideRight
                }
                SystemText {
                    width: parent.width
                    text: root.subtitle
                    pointSize: 11
                    font.weight: Font.Medium
                    color: Qt.rgba(0, 0, 0, Surroundings.increasedContrast ? 1 : 0.78)
                    elide: Text.ElideRight
                }
                Loader {
                    active: root.offersCleaning
                    visible: active
                    sourceComponent: ToastButton {
                        text: App.t("Clean Link", "Link bereinigen")
                        onClicked: root.cleanRequested()
                    }
                }
            }
        }
    }
}
