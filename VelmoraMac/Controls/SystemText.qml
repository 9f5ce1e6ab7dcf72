import QtQuick

// A text in the system font. Copied texts are shown as they are, never as markup.
Text {
    property real pointSize: 13

    font.pixelSize: pointSize
    textFormat: Text.PlainText
    Accessible.role: Accessible.StaticText
    Accessible.name: text
}
