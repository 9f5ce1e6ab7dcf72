import QtQuick
import VelmoraMac

// The notice's ground: bright glass with a breath of colour, and an outline. Its texts are dark in every appearance.
GlassPane {
    id: root

    property bool warning: false

    cornerRadius: 24
    material: Qt.rgba(0.965, 0.965, 0.975, 1)
    tints: warning ? [faded(Surroundings.colors.orange, 0.24), faded(Surroundings.colors.yellow, 0.14),
                      faded(Surroundings.colors.pink, 0.1)]
                   : [faded(Surroundings.colors.blue, 0.24), faded(Surroundings.colors.pink, 0.14), Qt.rgba(1, 1, 1, 0.1)]
    outline: Qt.rgba(0, 0, 0, 0.22)

    function faded(color: color, opacity: real): color {
        return Qt.rgba(color.r, color.g, color.b, opacity);
    }
}
