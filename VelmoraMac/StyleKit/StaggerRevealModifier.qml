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
    required property real dampingFraction
    // 0 hidden, 1 shown.
    readonly property real progress: motion.value
    readonly property real blurRadius: Surroundings.reducedMotion ? 0 : 8 * Math.max(0, 1 - progress)
    readonly property real travel: Surroundings.reducedMotion ? 0 : 1 - progress

    opacity: Math.min(1, Math.max(0, progress))
    scale: 1 - (1 - hiddenScale) * travel
    transform: Translate {
        y: root.offsetY * root.travel
    }
    // Larger than what it holds, because a blur spreads beyond it. Drawn through a picture to the very end of the motion:
    // that and drawing directly differ a little while it is scaled.
    Item {
        id: page

        anchors {
            fill: parent
            margins: -24
        }
        Item {
            id: holder

            anchors {
                fill: parent
                margins: 24
            }
        }
    }
    ShaderEffectSource {
        id: picture

        readonly property bool used: motion.moving && !Surroundings.reducedMotion

        anchors.fill: page
        hideSource: used
        // Invisible, Qt would not paint the picture.
        opacity: 0
        sourceItem: used ? page : null
        textureMirroring: ShaderEffectSource.NoMirroring
    }
    PictureEffect {
        anchors.fill: page
        blurRadius: root.blurRadius
        source: picture.used ? picture : null
    }
    SpringValue {
        id: motion

        to: root.shown ? 1 : 0
        response: root.response
        dampingFraction: root.dampingFraction
    }
}
