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
        id: fill

        property real position

        height: parent.height
        radius: parent.radius
        color: Surroundings.colors.blue
        width: root.progress < 0 ? root.width / 4 : root.width * Math.min(1, root.progress)
        x: root.progress < 0 ? (root.width - width) * position : 0

        SequentialAnimation on position {
            running: root.visible && root.progress < 0
            loops: Animation.Infinite

            NumberAnimation {
                to: 1
                duration: 900
                easing.type: Easing.InOutQuad
            }
            NumberAnimation {
                to: 0
                duration: 900
                easing.type: Easing.InOutQuad
            }
        }
    }
}
