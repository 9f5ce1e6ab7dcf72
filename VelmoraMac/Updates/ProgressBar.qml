import QtQuick
import VelmoraMac

// A progress bar: filled up to `progress`, or indeterminate with a moving piece while that is negative.
RoundedBox {
    id: root

    property real progress: -1
    property string label

    implicitHeight: 6
    radius: 3
    color: Surroundings.colors.cardStroke
    Accessible.role: Accessible.ProgressBar
    Accessible.name: label

    RoundedBox {
        height: parent.height
        radius: parent.radius
        aligned: root.progress >= 0
        color: Surroundings.colors.accent
        width: root.progress < 0 ? root.width / 4 : root.width * Math.min(1, root.progress)
        x: root.progress >= 0 ? 0 : (root.width - width) * (Surroundings.reducedMotion ? 0.5 : motion.value)
    }
    BreathingValue {
        id: motion

        duration: 0.9
        running: root.visible && root.progress < 0 && !Surroundings.reducedMotion
    }
}
