import QtQuick
import VelmoraMac
import QtQuick.Layouts

// The panel under the status icon: whether cleaning is on, three counters and the last cleaned link.
//
// The host shows it in a borderless translucent window of 306 by 386 points, 306 by 536 once there is a result. It
// plays its opening when it is created, and its closing, which takes less than 0.25 s, when
// `popoverAnimation.closeRequest` changes. It asks for the history with `openHistory()`.
Item {
    id: root

    required property PopoverAnimationState popoverAnimation
    // Whether it was opened by keys: shows at once where the keyboard is.
    property bool takesKeyboard: false

    signal openHistory

    // The window's, where it cannot be translucent.
    readonly property color ground: Surroundings.colors.windowBackground
    property bool glow: false
    property bool shellVisible: false
    property bool headerVisible: false
    property bool heroVisible: false
    property bool statsVisible: false
    property bool lastVisible: false
    property bool closing: false

    function resetVisibility() {
        shellVisible = headerVisible = heroVisible = statsVisible = lastVisible = false;
    }

    // Runs `change` after `seconds`, unless the popover has opened or closed again by then.
    function animate(seconds: real, change: var) {
        steps.after(seconds, change);
    }

    function playOpeningAnimation() {
        steps.startOver();
        closing = false;
        resetVisibility();
        animate(0, () => root.shellVisible = true);
        animate(0.13, () => root.headerVisible = true);
        animate(0.19, () => root.heroVisible = true);
        animate(0.245, () => root.statsVisible = true);
        animate(0.3, () => root.lastVisible = true);
    }

    function playClosingAnimation() {
        steps.startOver();
        closing = true;
        lastVisible = false;
        animate(0.015, () => root.statsVisible = false);
        animate(0.03, () => root.heroVisible = false);
        animate(0.045, () => root.headerVisible = false);
        animate(0.075, () => root.shellVisible = false);
    }

    Accessible.role: Accessible.Pane
    Accessible.name: "Velmora"
    implicitWidth: 306
    implicitHeight: 386 // Whatever it shows: its window grows first, and the view follows the window.

    Component.onCompleted: {
        playOpeningAnimation();
        if (takesKeyboard)
            header.takeKeyboard();
    }
    Component.onDestruction: steps.startOver()

    ViewSteps {
        id: steps
    }
    ViewSteps {
        id: pulse
    }
    Connections {
        target: root.popoverAnimation

        function onCloseRequestChanged() {
            root.playClosingAnimation();
        }
    }
    Connections {
        target: App.state

        function onLastCleanedAtChanged() {
            root.glow = true;
            pulse.startOver();
            pulse.after(1.15, () => root.glow = false);
        }
    }

    MorphingPanelBackground {
        id: panel

        objectName: "panel"
        anchors.fill: parent
        expanded: root.shellVisible
        response: root.closing ? 0.24 : 0.28
        dampingFraction: root.closing ? 0.86 : 0.84
        // What cannot be blended with the desktop does not fade: it is there, and then it is not.
        opacity: Surroundings.blendsWindows ? Math.min(1, Math.max(0, panel.progress)) : 1
    }
    ColumnLayout {
        anchors {
            fill: parent
            margins: 16
        }
        spacing: 12
        opacity: panel.opacity
        enabled: !root.closing // From the first moment: the order of the stops does not change while it opens.

        StaggerRevealModifier {
            shown: root.headerVisible
            offsetY: -8
            dampingFraction: root.closing ? 0.86 : 0.88
            Layout.fillWidth: true
            Layout.preferredHeight: header.implicitHeight

            PopoverHeader {
                id: header

                anchors.fill: parent
            }
        }
        StaggerRevealModifier {
            shown: root.heroVisible
            dampingFraction: root.closing ? 0.86 : 0.88
            Layout.fillWidth: true
            Layout.fillHeight: true

            PopoverHero {
                objectName: "hero"
                anchors.fill: parent
                glow: root.glow
            }
        }
        StaggerRevealModifier {
            shown: root.statsVisible
            dampingFraction: root.closing ? 0.86 : 0.88
            Layout.fillWidth: true
            Layout.preferredHeight: stats.implicitHeight

            PopoverStats {
                id: stats

                objectName: "stats"
                anchors.fill: parent
            }
        }
        StaggerRevealModifier {
            shown: root.lastVisible
            dampingFraction: root.closing ? 0.86 : 0.88
            Layout.fillWidth: true
            Layout.preferredHeight: card.implicitHeight

            LastLinkCard {
                id: card

                objectName: "lastLink"
                anchors.fill: parent
                growth: App.state.hasLastResult ? Math.max(0, Math.min(1, (root.height - 386) / 150)) : 1
                onOpenHistory: root.openHistory()
            }
        }
    }
}
