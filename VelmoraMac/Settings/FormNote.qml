import QtQuick
import VelmoraMac

// Small print of a form.
SystemText {
    pointSize: 10
    color: Surroundings.colors.secondaryLabel
    wrapMode: Text.Wrap
    lineHeight: 13
    lineHeightMode: Text.FixedHeight
}
