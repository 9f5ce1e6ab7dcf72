import QtQuick
import VelmoraMac

// Reveals or hides its content: from transparent, smaller, shifted and blurred to its normal look.
Item {
    id: root

    default property alias content: holder.data
    required property bool shown
    property real offsetY: 10
    property real hiddenScale: 0.965
    property real response: 0.24
    property real dampingFraction: 0.88
    // 0 hidden, 1 shown.
    readonly property real progress: motion.value
    readonly property real blurRadius: Surroundings.reducedMotion ? 0 : 8 * Math.max(0, 1 - progress)
    readonly property real travel: Surroundings.reducedMotion ? 0 : 1 - progress

    enabled: shown
    opacity: Math.min(1, Math.max(0, progress))
    scale: 1 - (1 - hiddenScale) * travel
    transform: Translate {
        y: root.offsetY * root.travel
    }
    // The layer is larger than what it holds: a blur spreads beyond it. Not by a source rectangle, which Qt's software
    // layers misplace on screens with more than one pixel a point.
    Item {
        anchors {
            fill: parent
            margins: -24
        }
        // To the very end of the motion: what is drawn through a layer and what is drawn directly differ a little while
        // it is scaled.
        layer.enabled: motion.moving && !Surroundings.reducedMotion
        layer.textureMirroring: ShaderEffectSource.NoMirroring
        layer.effect: PictureEffect {
            blurRadius: root.blurRadius
        }

        Item {
            id: holder

            anchors {
                fill: parent
                margins: 24
            }
        }
    }
    SpringValue {
        id: motion

        to: root.shown ? 1 : 0
        response: root.response
        dampingFraction: root.dampingFraction
    }
}
