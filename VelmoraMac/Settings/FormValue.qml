import QtQuick
import VelmoraMac

// A row of a form with a value to read.
FormRow {
    id: root

    required property string value

    SystemText {
        text: root.value
        color: Surroundings.colors.secondaryLabel
        Accessible.name: root.value
    }
}
