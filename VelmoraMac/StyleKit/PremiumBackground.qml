import QtQuick
import VelmoraMac

// The gradient of a theme under two glows that never stop moving slowly.
Backdrop {
    id: root

    drift: driftMotion.value

    BreathingValue {
        id: driftMotion

        duration: 18
        running: root.visible && root.opacity > 0 && !Surroundings.reducedMotion
    }
}
