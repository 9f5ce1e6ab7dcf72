import QtQuick
import VelmoraMac

// The popover's panel: a rounded backdrop that grows from a smaller shape to the whole item.
PremiumBackground {
    id: root

    property bool expanded: false
    required property real response
    required property real dampingFraction
    // 0 in the small shape, 1 when expanded; a little more while the spring overshoots.
    readonly property real progress: morph.value
    readonly property real small: Surroundings.reducedMotion || !Surroundings.blendsWindows ? 0 : 1 - progress

    themePalette: Surroundings.palette
    cornerRadius: 30
    scrim: themePalette.overlayScrim
    restingShade: 0.1
    shade: 0.1 + 0.24 * Math.max(0, 1 - progress)
    sideInset: Math.max(0, 9 * small)
    topInset: Math.max(0, 4 * small)
    bottomInset: Math.max(0, 14 * small)

    SpringValue {
        id: morph

        to: root.expanded ? 1 : 0
        response: root.response
        dampingFraction: root.dampingFraction
    }

    RoundedBox {
        anchors {
            fill: parent
            leftMargin: root.sideInset
            rightMargin: root.sideInset
            topMargin: root.topInset
            bottomMargin: root.bottomInset
        }
        radius: root.cornerRadius
        color: "transparent"
        borderColor: root.themePalette.cardStroke
    }
}
