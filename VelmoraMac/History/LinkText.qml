import QtQuick
import VelmoraMac

// A copied text on one line. What its cleaning has removed is in the colour `removedTint`, if that can be seen.
SystemText {
    id: root

    required property string linkText
    // The same text after its cleaning, or before it.
    property string otherText
    property color removedTint: "transparent"

    text: LinkLine.styled(linkText, otherText, width, pointSize, font.weight, removedTint)
    textFormat: Text.StyledText // The link is escaped in it.
    maximumLineCount: 1
    Accessible.name: linkText.slice(0, 2000)
}
