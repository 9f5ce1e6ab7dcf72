import QtQuick
import VelmoraMac

// A line of text that fades over into the next one in place.
Item {
    id: root

    required property string text
    required property real pointSize
    property int weight: Font.Bold
    property color color: "black"
    property bool elides: false // Whether a text that is too long for the item's width is cut.
    property string shownText: text
    property string leavingText: ""

    implicitWidth: arriving.implicitWidth
    implicitHeight: arriving.implicitHeight
    Accessible.role: Accessible.StaticText
    Accessible.name: text
    onTextChanged: {
        if (text === shownText)
            return;
        leavingText = shownText;
        shownText = text;
        fade.jump(0);
        fade.to = 1;
    }

    Text {
        width: root.width
        height: root.height
        verticalAlignment: Text.AlignVCenter
        text: root.leavingText
        textFormat: Text.PlainText
        font: arriving.font
        color: root.color
        elide: root.elides ? Text.ElideRight : Text.ElideNone
        visible: fade.moving
        opacity: Math.max(0, 1 - fade.value)
    }
    Text {
        id: arriving

        width: root.width
        height: root.height
        verticalAlignment: Text.AlignVCenter
        text: root.shownText
        textFormat: Text.PlainText
        font.pixelSize: root.pointSize
        font.weight: root.weight
        color: root.color
        elide: root.elides ? Text.ElideRight : Text.ElideNone
        opacity: Math.min(1, Math.max(0, fade.value))
    }
    SpringValue {
        id: fade

        to: 1
        response: 0.42
        dampingFraction: 0.86
    }
}
