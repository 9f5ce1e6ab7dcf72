import QtQuick
import VelmoraMac

// The round status seal. It follows the pointer and lights up while `glow` is set.
Item {
    id: root

    required property string symbolName
    property color tint: Surroundings.palette.successAccent
    property bool glow: false
    property bool compact: false
    // Where the pointer is over the surroundings, -1 to 1 on both axes from their middle.
    property point pointer: Qt.point(0, 0)
    readonly property real side: compact ? 31 : 40
    readonly property color ringColor: Surroundings.palette.primaryText
    readonly property real light: Math.max(0, glowMotion.value)

    implicitWidth: side
    implicitHeight: side
    rotation: -8 * leanX.value
    transform: Translate {
        x: 6 * leanX.value
        y: 6 * leanY.value
    }

    SoftGlow {
        anchors.centerIn: parent
        width: root.side * 2.6
        height: width
        color: root.tint
        opacity: 0.13 + 0.11 * root.light
        scale: 1 + 0.08 * root.light
    }
    RoundedBox {
        anchors.centerIn: parent
        width: root.side + 14
        height: width
        radius: width / 2
        color: "transparent"
        borderColor: Qt.alpha(root.ringColor, 0.1)
        scale: 1 + 0.025 * root.light
    }
    RoundedBox {
        anchors.fill: parent
        radius: width / 2
        color: Surroundings.sealShade(Surroundings.palette)
        scale: 1 + 0.035 * root.light
    }
    RoundedBox {
        anchors.fill: parent
        radius: width / 2
        color: Qt.alpha(root.tint, 0.13 + 0.11 * root.light)
        borderColor: Qt.alpha(root.ringColor, 0.22)
        scale: 1 + 0.035 * root.light
    }
    FadingSymbol {
        anchors.centerIn: parent
        symbolName: root.symbolName
        color: root.tint
        pointSize: root.compact ? 21 : 26
        scale: 1 + 0.035 * root.light
    }

    SpringValue {
        id: glowMotion

        to: root.glow ? 1 : 0
        response: root.glow ? 0.44 : 0.62
        dampingFraction: root.glow ? 0.8 : 0.78
    }
    SpringValue {
        id: leanX

        to: Surroundings.reducedMotion ? 0 : root.pointer.x
        response: 0.42
        dampingFraction: 0.86
    }
    SpringValue {
        id: leanY

        to: Surroundings.reducedMotion ? 0 : root.pointer.y
        response: 0.42
        dampingFraction: 0.86
    }
}
