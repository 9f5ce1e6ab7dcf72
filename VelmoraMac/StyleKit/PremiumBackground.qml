import VelmoraMac

// The gradient of a theme under two slowly moving glows.
Backdrop {
    id: root

    drift: driftMotion.value

    BreathingValue {
        id: driftMotion

        duration: 18
        running: root.visible && root.opacity > 0 && !Surroundings.reducedMotion
    }
}
