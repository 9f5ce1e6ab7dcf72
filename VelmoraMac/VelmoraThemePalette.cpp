#include "VelmoraThemePalette.h"

namespace {

QColor rgb(double red, double green, double blue, double opacity = 1)
{
    return QColor::fromRgbF(static_cast<float>(red), static_cast<float>(green), static_cast<float>(blue),
                            static_cast<float>(opacity));
}

QColor white(double opacity = 1)
{
    return rgb(1, 1, 1, opacity);
}

QColor black(double opacity)
{
    return rgb(0, 0, 0, opacity);
}

QColor at(QColor color, double opacity)
{
    color.setAlphaF(static_cast<float>(opacity));
    return color;
}

// Each palette lists the fields in the order of their declaration.
VelmoraThemePalette aurora(const SystemColors &system)
{
    return {
        {rgb(0.05, 0.02, 0.18), rgb(0.2, 0.04, 0.42), rgb(0.5, 0.08, 0.68)},
        at(system.pink, 0.34),
        at(system.blue, 0.24),
        white(),
        white(0.72),
        white(0.52),
        white(0.1),
        white(0.14),
        black(0.16),
        system.mint,
        system.pink,
        system.cyan,
        at(system.yellow, 0.92),
        black(0.72),
        black(0.3),
        0.72,
        {rgb(0.98, 0.34, 0.84), rgb(0.16, 0.9, 0.92)},
    };
}

VelmoraThemePalette ocean(const SystemColors &system)
{
    return {
        {rgb(0.02, 0.12, 0.2), rgb(0.02, 0.34, 0.48), rgb(0.05, 0.76, 0.82)},
        at(system.cyan, 0.32),
        at(system.blue, 0.26),
        white(),
        white(0.74),
        white(0.54),
        white(0.11),
        white(0.15),
        black(0.15),
        rgb(0.42, 1.0, 0.82),
        rgb(1.0, 0.48, 0.64),
        rgb(0.42, 0.92, 1.0),
        rgb(1.0, 0.86, 0.34),
        black(0.76),
        black(0.28),
        0.72,
        {rgb(0.14, 0.78, 0.96), rgb(0.46, 1.0, 0.74)},
    };
}

VelmoraThemePalette light()
{
    return {
        {rgb(0.98, 0.99, 1.0), rgb(0.9, 0.97, 1.0), rgb(0.82, 0.94, 0.98)},
        rgb(0.16, 0.78, 0.92, 0.2),
        rgb(0.82, 0.32, 1.0, 0.16),
        rgb(0.06, 0.07, 0.09),
        rgb(0.18, 0.2, 0.24, 0.76),
        rgb(0.2, 0.22, 0.27, 0.55),
        white(0.58),
        black(0.08),
        black(0.055),
        rgb(0.04, 0.78, 0.66),
        rgb(0.92, 0.24, 0.5),
        rgb(0.04, 0.64, 0.9),
        rgb(0.88, 0.56, 0.0),
        black(0.78),
        white(0.46),
        0.86,
        {rgb(0.02, 0.66, 0.92), rgb(0.1, 0.86, 0.72)},
    };
}

VelmoraThemePalette graphite()
{
    return {
        {rgb(0.06, 0.06, 0.06), rgb(0.12, 0.12, 0.12), rgb(0.18, 0.16, 0.14)},
        rgb(0.9, 0.58, 0.38, 0.18),
        rgb(0.56, 0.56, 0.62, 0.15),
        white(),
        white(0.72),
        white(0.5),
        black(0.24),
        white(0.11),
        black(0.24),
        rgb(0.42, 0.94, 0.74),
        rgb(1.0, 0.42, 0.54),
        rgb(0.54, 0.82, 1.0),
        rgb(1.0, 0.84, 0.28),
        black(0.76),
        black(0.42),
        0.68,
        {rgb(0.34, 0.34, 0.36), rgb(0.78, 0.68, 0.58)},
    };
}

} // namespace

VelmoraThemePalette VelmoraThemePalette::of(Velmora::VelmoraTheme theme, const SystemColors &system)
{
    switch (theme) {
    case VelmoraTheme::aurora:
        return aurora(system);
    case VelmoraTheme::ocean:
        return ocean(system);
    case VelmoraTheme::light:
        return light();
    case VelmoraTheme::graphite:
        break;
    }
    return graphite();
}
