import QtQuick
import VelmoraMac

// One of a few values, side by side in one track. Left and right arrows choose when it has the keyboard.
FocusScope {
    id: root

    required property string label
    required property list<int> values
    required property list<string> titles // One for each value, in their order.
    required property int current
    // Symbols beside the titles; none for a plain picker.
    property list<string> symbols
    // Whether the choice turns pages: for assistive tools.
    property bool turnsPages: false

    readonly property int currentIndex: [...values].indexOf(current)

    signal chosen(int value)

    function step(by: int) {
        const next = currentIndex + by;
        if (next >= 0 && next < values.length)
            chosen(values[next]);
    }

    implicitWidth: segments.implicitWidth + 4
    implicitHeight: 26
    activeFocusOnTab: true
    Accessible.role: turnsPages ? Accessible.PageTabList : Accessible.Grouping
    Accessible.name: label
    Accessible.description: titles[currentIndex] ?? "" // Read with the picker when it gets the keyboard.
    Keys.onLeftPressed: step(-1)
    Keys.onRightPressed: step(1)

    RoundedBox { // Opaque: the picker may stand on a line.
        anchors.fill: parent
        radius: 7
        color: Surroundings.colors.windowBackground
    }
    RoundedBox {
        anchors.fill: parent
        radius: 7
        color: Surroundings.colors.controlFill
        borderColor: Surroundings.colors.cardStroke

        FocusRing {
            shown: root.activeFocus
            radius: 10
        }
    }
    Row {
        id: segments

        anchors.centerIn: parent

        Repeater {
            id: repeater

            model: root.values.length

            RoundedBox {
                id: segment

                required property int index
                readonly property bool selected: index === root.currentIndex

                width: Math.max(58, content.implicitWidth + 24)
                height: 22
                radius: 5.5
                color: selected ? Surroundings.colors.controlRaised
                                : (hover.hovered ? Surroundings.colors.controlFill : "transparent")
                borderColor: selected ? Surroundings.colors.cardStroke : "transparent"
                Accessible.role: root.turnsPages ? Accessible.PageTab : Accessible.RadioButton
                Accessible.name: root.titles[index]
                Accessible.checkable: !root.turnsPages
                Accessible.checked: selected && !root.turnsPages
                Accessible.selectable: root.turnsPages
                Accessible.selected: selected && root.turnsPages
                Accessible.focusable: true
                Accessible.focused: selected && root.activeFocus
                Accessible.onPressAction: root.chosen(root.values[index])

                Row {
                    id: content

                    anchors.centerIn: parent
                    spacing: 6

                    SymbolImage {
                        anchors.verticalCenter: parent.verticalCenter
                        visible: root.symbols.length > 0
                        symbolName: visible ? root.symbols[segment.index] : ""
                        pointSize: 12
                        color: Surroundings.colors.label
                    }
                    Text {
                        anchors.verticalCenter: parent.verticalCenter
                        text: root.titles[segment.index]
                        textFormat: Text.PlainText
                        font.pixelSize: 13
                        font.weight: segment.selected ? Font.Medium : Font.Normal
                        color: Surroundings.colors.label
                    }
                }
                HoverHandler {
                    id: hover
                }
                TapHandler {
                    onTapped: root.chosen(root.values[segment.index])
                }
            }
        }
    }
}
