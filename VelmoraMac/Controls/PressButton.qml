import QtQuick
import QtQuick.Templates as T

// What every button does: it is pressed by keys and assistive tools too, and is as large as what it shows.
T.Button {
    hoverEnabled: true // Whatever the platform prefers.
    implicitWidth: implicitContentWidth + leftPadding + rightPadding
    implicitHeight: implicitContentHeight + topPadding + bottomPadding
    Accessible.name: text
    Accessible.onPressAction: if (enabled) clicked()
    Keys.onReturnPressed: clicked()
    Keys.onEnterPressed: clicked()
}
