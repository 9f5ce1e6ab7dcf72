import QtQuick
import QtQuick.Templates as T

// What every switch does: assistive tools toggle it as its user does.
T.Switch {
    hoverEnabled: true // Whatever the platform prefers.
    Accessible.name: text
    Accessible.onPressAction: toggleByUser()
    Accessible.onToggleAction: toggleByUser()

    function toggleByUser() {
        toggle();
        toggled();
    }
}
