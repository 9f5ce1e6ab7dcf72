#include "SystemColors.h"

namespace {

QColor grey(int value, double opacity = 1)
{
    return {value, value, value, qRound(opacity * 255)};
}

SystemColors light()
{
    return {
        .blue = {0, 122, 255},
        .pink = {255, 45, 85},
        .orange = {255, 149, 0},
        .yellow = {255, 204, 0},
        .mint = {0, 199, 190},
        .cyan = {85, 190, 240},
        .red = {255, 59, 48},
        .accent = {0, 105, 220},
        .focus = {0, 122, 255},
        .problem = {176, 41, 33},
        .removed = {176, 41, 33},
        .label = grey(0, 0.85),
        // 0.5 is usual, but gives small print less contrast than 4.5 : 1.
        .secondaryLabel = grey(0, 0.58),
        .separator = grey(0, 0.09),
        .windowBackground = grey(0xec),
        .textBackground = grey(0xff),
        .paneFill = grey(0xff, 0.35),
        .cardFill = grey(0xff, 0.6),
        .cardStroke = grey(0, 0.08),
        .controlFill = grey(0, 0.07),
        .controlRaised = grey(0xff),
        .buttonFill = grey(0xff),
    };
}

SystemColors dark()
{
    return {
        .blue = {10, 132, 255},
        .pink = {255, 55, 95},
        .orange = {255, 159, 10},
        .yellow = {255, 214, 10},
        .mint = {102, 212, 207},
        .cyan = {90, 200, 245},
        .red = {255, 69, 58},
        .accent = {0, 105, 220},
        .focus = {10, 132, 255},
        .problem = {255, 120, 110},
        .removed = {255, 120, 110},
        .label = grey(0xff, 0.85),
        .secondaryLabel = grey(0xff, 0.63),
        .separator = grey(0xff, 0.09),
        .windowBackground = grey(0x32),
        .textBackground = grey(0x1e),
        .paneFill = grey(0, 0.12),
        .cardFill = grey(0xff, 0.045),
        .cardStroke = grey(0xff, 0.08),
        .controlFill = grey(0xff, 0.1),
        .controlRaised = grey(0x6b),
        .buttonFill = grey(0xff, 0.16),
    };
}

} // namespace

SystemColors SystemColors::of(bool darkAppearance)
{
    return darkAppearance ? dark() : light();
}
