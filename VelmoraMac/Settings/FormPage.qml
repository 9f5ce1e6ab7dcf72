import QtQuick
import VelmoraMac
import QtQuick.Templates as T

// A form that scrolls, made of sections.
Flickable {
    id: root

    default property alias sections: column.data

    clip: true
    contentWidth: width
    contentHeight: column.implicitHeight + 32
    boundsBehavior: Flickable.StopAtBounds
    flickableDirection: Flickable.VerticalFlick

    T.ScrollBar.vertical: SlimScrollBar { }
    Keys.onPressed: event => keys.press(event)

    ScrollKeys {
        id: keys

        parent: root
        view: root
    }

    Column {
        id: column

        x: 16
        y: 16
        width: root.width - 32
        spacing: 20
    }
}
