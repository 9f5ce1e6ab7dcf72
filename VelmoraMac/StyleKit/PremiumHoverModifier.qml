import QtQuick
import VelmoraMac

// Makes its content a little lighter, more saturated and larger while the pointer is over it.
Item {
    id: root

    readonly property bool hovering: hover.hovered
    readonly property real lift: Surroundings.reducedMotion ? 0 : Math.max(0, motion.value)

    scale: 1 + 0.012 * lift
    layer.enabled: lift > 0.01
    layer.textureMirroring: ShaderEffectSource.NoMirroring
    layer.effect: PictureEffect {
        brightness: 0.075 * root.lift
        saturation: 1 + 0.13 * root.lift
    }

    HoverHandler {
        id: hover
    }

    SpringValue {
        id: motion

        to: root.hovering ? 1 : 0
        response: 0.34
        dampingFraction: 0.82
    }
}
