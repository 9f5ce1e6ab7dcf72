import QtQuick
import VelmoraMac

// The status item's menu, for desktops that do not draw it themselves.
RoundedBox {
    id: root

    required property StatusMenuModel menu

    readonly property systemColors colors: Surroundings.colors
    readonly property int checkWidth: menu.hasChecks ? 18 : 0
    property real widestTitle: 0

    implicitWidth: Math.max(menu.minimumWidth, widestTitle + checkWidth + 36)
    implicitHeight: column.implicitHeight + 10
    radius: 8
    color: colors.windowBackground
    borderColor: colors.separator
    Accessible.role: Accessible.PopupMenu
    Accessible.name: "Velmora"

    Column {
        id: column

        y: 5
        width: root.width

        Repeater {
            model: root.menu.entries

            Item {
                id: row

                required property int index
                required property var modelData
                readonly property bool isSeparator: modelData.title === ""
                readonly property bool isCurrent: root.menu.current === index

                width: root.width
                height: isSeparator ? 11 : 26
                Accessible.ignored: isSeparator
                Accessible.role: Accessible.MenuItem
                Accessible.name: modelData.title
                Accessible.checked: modelData.checked
                Accessible.onPressAction: root.menu.choose(index)

                RoundedBox {
                    visible: row.isSeparator
                    x: 10
                    y: 5
                    width: parent.width - 20
                    height: 1
                    color: root.colors.separator
                }
                RoundedBox {
                    visible: row.isCurrent
                    x: 5
                    width: parent.width - 10
                    height: parent.height
                    radius: 5
                    color: root.colors.accent
                }
                SystemText {
                    visible: row.modelData.checked
                    anchors.verticalCenter: parent.verticalCenter
                    x: 13
                    text: "\u2713"
                    color: title.color
                    Accessible.ignored: true
                }
                SystemText {
                    id: title

                    anchors.verticalCenter: parent.verticalCenter
                    x: 16 + root.checkWidth
                    text: row.modelData.title
                    color: row.isCurrent ? "white" : root.colors.label
                    Accessible.ignored: true
                    Component.onCompleted: root.widestTitle = Math.max(root.widestTitle, implicitWidth)
                }
                MouseArea {
                    anchors.fill: parent
                    hoverEnabled: true
                    acceptedButtons: Qt.LeftButton | Qt.RightButton
                    onPositionChanged: root.menu.current = row.index
                    onExited: root.menu.current = -1
                    onReleased: if (containsMouse) root.menu.choose(row.index)
                }
            }
        }
    }
}
