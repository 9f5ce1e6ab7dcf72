import QtQuick
import VelmoraMac

// A thin bar: filled as far as `progress` says, or with a piece that wanders while that is negative.
Rectangle {
    id: root

    property real progress: -1
    property string label

    implicitHeight: 6
    radius: 3
    clip: true
    color: Surroundings.colors.cardStroke
    Accessible.role: Accessible.ProgressBar
    Accessible.name: label

    Rectangle {
        id: fill

        property real wander

        height: parent.height
        radius: parent.radius
        color: Surroundings.colors.blue
        width: root.progress < 0 ? root.width / 4 : root.width * Math.min(1, root.progress)
        x: root.progress < 0 ? (root.width - width) * wander : 0

        SequentialAnimation on wander {
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
