import QtQuick
import VelmoraMac

// A symbol that fades over into the next one in place.
Item {
    id: root

    required property string symbolName
    required property real pointSize
    property color color: "black"
    property string shownName: symbolName
    property string leavingName: ""

    implicitWidth: arriving.implicitWidth
    implicitHeight: arriving.implicitHeight
    onSymbolNameChanged: {
        if (symbolName === shownName)
            return;
        leavingName = shownName;
        shownName = symbolName;
        fade.jump(0);
        fade.to = 1;
    }

    SymbolImage {
        symbolName: root.leavingName
        pointSize: root.pointSize
        color: root.color
        visible: fade.moving
        opacity: Math.max(0, 1 - fade.value)
    }
    SymbolImage {
        id: arriving

        symbolName: root.shownName
        pointSize: root.pointSize
        color: root.color
        opacity: Math.min(1, Math.max(0, fade.value))
    }
    SpringValue {
        id: fade

        to: 1
        response: 0.42
        dampingFraction: 0.86
    }
}
