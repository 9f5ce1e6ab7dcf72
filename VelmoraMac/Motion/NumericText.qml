import QtQuick
import VelmoraMac

// A number whose changed digits roll: the old one leaves upwards, the new one comes from below. Places that a number
// gains or loses open and close. A number too long for `maximumWidth` is drawn smaller.
Item {
    id: root

    required property double number
    required property real pointSize
    property real maximumWidth: Infinity
    property int weight: Font.Bold
    property color color: "black"
    readonly property string text: number.toFixed(0)
    // Whole, because fonts have whole sizes and a fraction would be rounded up.
    readonly property int fittedSize: Math.floor(pointSize * Math.min(1, maximumWidth / Math.max(1, whole.advanceWidth)))

    implicitWidth: digits.width
    implicitHeight: line.height
    Accessible.role: Accessible.StaticText
    Accessible.name: text

    TextMetrics {
        id: whole

        text: root.text
        font.pixelSize: root.pointSize
        font.weight: root.weight
    }
    FontMetrics {
        id: line

        font: whole.font
    }
    Row {
        id: digits

        height: line.height
        layoutDirection: Qt.RightToLeft // Digits keep their places when the number gets one more.

        Repeater {
            model: 12 // Places, filled or not: one that appears has to roll as well.

            RollingDigit {
                required property int index

                height: digits.height
                digit: root.text.charAt(root.text.length - 1 - index)
                pointSize: root.fittedSize
                weight: root.weight
                color: root.color
            }
        }
    }
}
