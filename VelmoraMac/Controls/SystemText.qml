import QtQuick

// A piece of text in the system font. Whatever the user copied is shown as it is: never as markup.
Text {
    property real pointSize: 13

    font.pixelSize: pointSize
    textFormat: Text.PlainText
    Accessible.role: Accessible.StaticText
    Accessible.name: text
}
