import QtQuick
import VelmoraMac

// One place of a number: as wide as its digit, without width while it is empty.
Item {
    id: root

    required property string digit
    required property real pointSize
    property int weight: Font.Bold
    property color color: "black"
    property string shownDigit: digit
    property string leavingDigit: ""
    readonly property real travel: Surroundings.reducedMotion ? 0 : 0.6 * arriving.height

    width: roll.moving ? leaving.implicitWidth + (arriving.implicitWidth - leaving.implicitWidth) * roll.value
                       : arriving.implicitWidth
    visible: width > 0
    onDigitChanged: {
        if (digit === shownDigit)
            return;
        leavingDigit = shownDigit;
        shownDigit = digit;
        roll.jump(0);
        roll.to = 1;
    }

    Text {
        id: leaving

        text: root.leavingDigit
        textFormat: Text.PlainText
        font: arriving.font
        color: root.color
        visible: roll.moving
        opacity: Math.max(0, 1 - 1.6 * roll.value)
        y: arriving.restingY - root.travel * roll.value
    }
    Text {
        id: arriving

        readonly property real restingY: (root.height - height) / 2

        text: root.shownDigit
        textFormat: Text.PlainText
        font.pixelSize: root.pointSize
        font.weight: root.weight
        color: root.color
        opacity: Math.min(1, Math.max(0, roll.value))
        y: restingY + root.travel * (1 - roll.value)
    }
    SpringValue {
        id: roll

        to: 1
        response: 0.44
        dampingFraction: 0.84
    }
}
