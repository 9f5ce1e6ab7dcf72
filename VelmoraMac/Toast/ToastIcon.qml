import QtQuick
import VelmoraMac

// The application's icon over a pulsing mint glow.
Item {
    id: root

    property bool shine: false

    implicitWidth: 52
    implicitHeight: 52

    SoftGlow {
        // The glow fades out towards its rim: seen, it is about 52 points wide.
        anchors.centerIn: parent
        width: 78
        height: 78
        color: Surroundings.colors.mint
        opacity: 0.55
        scale: 0.92 + 0.24 * breath.value
    }
    AssetImage {
        anchors.centerIn: parent
        width: 50
        height: 50
        name: "velmora-app-icon"
    }
    BreathingValue {
        id: breath

        duration: 1.6
        running: root.shine && !Surroundings.reducedMotion
    }
}
