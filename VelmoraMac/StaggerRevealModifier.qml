import QtQuick
import VelmoraMac

// Lets what it holds come into view or leave it: from transparent, smaller, shifted and blurred to as it is.
Item {
    id: root

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
    layer.enabled: blurRadius > 0.2 && progress > 0
    layer.sourceRect: Qt.rect(-24, -24, width + 48, height + 48)
    layer.textureMirroring: ShaderEffectSource.NoMirroring
    layer.effect: PictureEffect {
        padding: 24
        blurRadius: root.blurRadius
    }

    SpringValue {
        id: motion

        to: root.shown ? 1 : 0
        response: root.response
        dampingFraction: root.dampingFraction
    }
}
