import QtQuick
import VelmoraMac

// A row of a form with a switch.
FormRow {
    id: root

    required property bool checked

    signal switched(bool checked)

    SystemSwitch {
        text: root.label
        checked: root.checked
        onToggled: root.switched(checked)
    }
}
