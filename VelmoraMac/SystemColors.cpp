#include "SystemColors.h"

namespace {

QColor grey(int value, double opacity = 1)
{
    return {value, value, value, qRound(opacity * 255)};
}

SystemColors light()
{
    SystemColors c;
    c.blue = {0, 122, 255};
    c.pink = {255, 45, 85};
    c.orange = {255, 149, 0};
    c.yellow = {255, 204, 0};
    c.mint = {0, 199, 190};
    c.cyan = {85, 190, 240};
    c.red = {255, 59, 48};
    c.label = grey(0, 0.85);
    c.secondaryLabel = grey(0, 0.58); // 0.5 is the custom, but gives small print less contrast than 4.5 : 1.
    c.separator = grey(0, 0.09);
    c.windowBackground = grey(0xec);
    c.textBackground = grey(0xff);
    c.paneFill = grey(0xff, 0.35);
    c.cardFill = grey(0xff, 0.6);
    c.cardStroke = grey(0, 0.08);
    c.controlFill = grey(0, 0.07);
    c.controlRaised = grey(0xff);
    c.material = grey(0xf2, 0.85);
    return c;
}

SystemColors dark()
{
    SystemColors c;
    c.blue = {10, 132, 255};
    c.pink = {255, 55, 95};
    c.orange = {255, 159, 10};
    c.yellow = {255, 214, 10};
    c.mint = {102, 212, 207};
    c.cyan = {90, 200, 245};
    c.red = {255, 69, 58};
    c.label = grey(0xff, 0.85);
    c.secondaryLabel = grey(0xff, 0.63);
    c.separator = grey(0xff, 0.09);
    c.windowBackground = grey(0x32);
    c.textBackground = grey(0x1e);
    c.paneFill = grey(0, 0.12);
    c.cardFill = grey(0xff, 0.045);
    c.cardStroke = grey(0xff, 0.08);
    c.controlFill = grey(0xff, 0.1);
    c.controlRaised = grey(0x6b);
    c.material = grey(0x26, 0.8);
    return c;
}

} // namespace

SystemColors SystemColors::of(bool darkAppearance)
{
    return darkAppearance ? dark() : light();
}
