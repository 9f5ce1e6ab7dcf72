import QtQuick
import VelmoraMac

// The toast's background: bright glass with a light tint, and an outline. Its texts are dark in every appearance.
GlassPane {
    property bool warning: false

    cornerRadius: 24
    material: Qt.rgba(0.965, 0.965, 0.975, 1)
    tints: warning ? [Qt.alpha(Surroundings.colors.orange, 0.24), Qt.alpha(Surroundings.colors.yellow, 0.14),
                      Qt.alpha(Surroundings.colors.pink, 0.1)]
                   : [Qt.alpha(Surroundings.colors.blue, 0.24), Qt.alpha(Surroundings.colors.pink, 0.14),
                      Qt.rgba(1, 1, 1, 0.1)]
    outline: Qt.rgba(0, 0, 0, Surroundings.increasedContrast ? 0.7 : 0.22)
}
