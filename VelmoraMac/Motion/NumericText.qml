import QtQuick
import VelmoraMac

// A number whose changed digits roll: the old one leaves upwards, the new one comes from below.
Row {
    id: root

    required property double value
    required property real pointSize
    property int weight: Font.Bold
    property color color: "black"
    readonly property string text: value.toFixed(0)

    layoutDirection: Qt.RightToLeft // Digits keep their places when the number gets one more.
    Accessible.role: Accessible.StaticText
    Accessible.name: text

    Repeater {
        model: root.text.length

        Item {
            id: place

            required property int index
            readonly property string digit: root.text.charAt(root.text.length - 1 - index)
            property string shownDigit: digit
            property string leavingDigit: ""

            width: arriving.implicitWidth
            height: arriving.implicitHeight
            onDigitChanged: {
                if (digit === "" || digit === shownDigit)
                    return;
                leavingDigit = shownDigit;
                shownDigit = digit;
                roll.jump(0);
                roll.to = 1;
            }

            Text {
                text: place.leavingDigit
                textFormat: Text.PlainText
                font: arriving.font
                color: root.color
                visible: roll.moving
                opacity: Math.max(0, 1 - 1.6 * roll.value)
                y: Surroundings.reducedMotion ? 0 : -0.6 * height * roll.value
            }
            Text {
                id: arriving

                text: place.shownDigit
                textFormat: Text.PlainText
                font.pixelSize: root.pointSize
                font.weight: root.weight
                color: root.color
                opacity: Math.min(1, Math.max(0, roll.value))
                y: Surroundings.reducedMotion ? 0 : 0.6 * height * (1 - roll.value)
            }
            SpringValue {
                id: roll

                to: 1
                response: 0.44
                dampingFraction: 0.84
            }
        }
    }
}
