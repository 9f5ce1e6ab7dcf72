import QtQuick
import VelmoraMac

// A button on a themed panel.
PressButton {
    id: root

    enum Kind {
        Primary,
        Secondary,
        Ghost
    }

    property int kind: PremiumButtonStyle.Secondary
    readonly property real fillOpacity: {
        if (kind === PremiumButtonStyle.Primary)
            return down ? 0.78 : 0.95;
        if (kind === PremiumButtonStyle.Secondary)
            return down ? 0.16 : 0.11;
        return down ? 0.1 : 0.06;
    }
    readonly property color fill: kind === PremiumButtonStyle.Primary ? Surroundings.palette.successAccent
                                                                      : Surroundings.palette.primaryText

    horizontalPadding: 12
    verticalPadding: 8
    scale: (1 - 0.03 * press.value) * hover.growth

    contentItem: Text {
        text: root.text
        textFormat: Text.PlainText
        font.pixelSize: 12
        font.weight: Font.DemiBold
        lineHeight: 15
        lineHeightMode: Text.FixedHeight
        horizontalAlignment: Text.AlignHCenter
        color: root.kind === PremiumButtonStyle.Primary ? Surroundings.palette.badgeText
                                                        : Surroundings.palette.primaryText
    }
    background: RoundedBox {
        radius: 13
        color: hover.lit(Qt.alpha(root.fill, root.fillOpacity))
        borderColor: Surroundings.increasedContrast ? Surroundings.palette.cardStroke : Qt.rgba(1, 1, 1, 0.1)

        FocusRing {
            shown: root.visualFocus
            radius: 16
        }
    }

    PremiumHoverModifier {
        id: hover

        hovering: root.hovered
    }
    SpringValue {
        id: press

        to: root.down ? 1 : 0
        response: 0.28
        dampingFraction: 0.82
    }
}
