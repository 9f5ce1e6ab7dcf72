#include "VelmoraThemePalette.h"

#include <VelmoraMac/Texts/LocalizedStrings.h>

#include <algorithm>
#include <array>
#include <cmath>

using namespace Qt::StringLiterals;

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

VelmoraThemePalette aurora(const SystemColors &system)
{
    return {
        .backgroundColors = {rgb(0.05, 0.02, 0.18), rgb(0.2, 0.04, 0.42), rgb(0.5, 0.08, 0.68)},
        .glowPrimary = at(system.pink, 0.34),
        .glowSecondary = at(system.blue, 0.24),
        .primaryText = white(),
        .secondaryText = white(0.72),
        .mutedText = white(0.52),
        .cardFill = white(0.1),
        .cardStroke = white(0.14),
        .linkRowFill = black(0.16),
        .successAccent = system.mint,
        .dangerAccent = system.pink,
        .infoAccent = system.cyan,
        .warningText = at(system.yellow, 0.92),
        .badgeText = black(0.72),
        .overlayScrim = black(0.3),
        .materialOpacity = 0.72,
        .switchColors = {rgb(0.98, 0.34, 0.84), rgb(0.16, 0.9, 0.92)},
    };
}

VelmoraThemePalette ocean(const SystemColors &system)
{
    return {
        .backgroundColors = {rgb(0.02, 0.12, 0.2), rgb(0.02, 0.34, 0.48), rgb(0.05, 0.76, 0.82)},
        .glowPrimary = at(system.cyan, 0.32),
        .glowSecondary = at(system.blue, 0.26),
        .primaryText = white(),
        .secondaryText = white(0.74),
        .mutedText = white(0.54),
        .cardFill = white(0.11),
        .cardStroke = white(0.15),
        .linkRowFill = black(0.15),
        .successAccent = rgb(0.42, 1.0, 0.82),
        .dangerAccent = rgb(1.0, 0.48, 0.64),
        .infoAccent = rgb(0.42, 0.92, 1.0),
        .warningText = rgb(1.0, 0.86, 0.34),
        .badgeText = black(0.76),
        .overlayScrim = black(0.28),
        .materialOpacity = 0.72,
        .switchColors = {rgb(0.14, 0.78, 0.96), rgb(0.46, 1.0, 0.74)},
    };
}

VelmoraThemePalette light(const SystemColors &)
{
    return {
        .backgroundColors = {rgb(0.98, 0.99, 1.0), rgb(0.9, 0.97, 1.0), rgb(0.82, 0.94, 0.98)},
        .glowPrimary = rgb(0.16, 0.78, 0.92, 0.2),
        .glowSecondary = rgb(0.82, 0.32, 1.0, 0.16),
        .primaryText = rgb(0.06, 0.07, 0.09),
        .secondaryText = rgb(0.18, 0.2, 0.24, 0.76),
        .mutedText = rgb(0.2, 0.22, 0.27, 0.55),
        .cardFill = white(0.58),
        .cardStroke = black(0.08),
        .linkRowFill = black(0.055),
        .successAccent = rgb(0.04, 0.78, 0.66),
        .dangerAccent = rgb(0.92, 0.24, 0.5),
        .infoAccent = rgb(0.04, 0.64, 0.9),
        .warningText = rgb(0.88, 0.56, 0.0),
        .badgeText = black(0.78),
        .overlayScrim = white(0.46),
        .materialOpacity = 0.86,
        .switchColors = {rgb(0.02, 0.66, 0.92), rgb(0.1, 0.86, 0.72)},
    };
}

VelmoraThemePalette graphite(const SystemColors &)
{
    return {
        .backgroundColors = {rgb(0.06, 0.06, 0.06), rgb(0.12, 0.12, 0.12), rgb(0.18, 0.16, 0.14)},
        .glowPrimary = rgb(0.9, 0.58, 0.38, 0.18),
        .glowSecondary = rgb(0.56, 0.56, 0.62, 0.15),
        .primaryText = white(),
        .secondaryText = white(0.72),
        .mutedText = white(0.5),
        .cardFill = black(0.24),
        .cardStroke = white(0.11),
        .linkRowFill = black(0.24),
        .successAccent = rgb(0.42, 0.94, 0.74),
        .dangerAccent = rgb(1.0, 0.42, 0.54),
        .infoAccent = rgb(0.54, 0.82, 1.0),
        .warningText = rgb(1.0, 0.84, 0.28),
        .badgeText = black(0.76),
        .overlayScrim = black(0.42),
        .materialOpacity = 0.68,
        .switchColors = {rgb(0.34, 0.34, 0.36), rgb(0.78, 0.68, 0.58)},
    };
}

// A theme: its name in both languages and what makes its palette.
constexpr std::array singleColors = {&VelmoraThemePalette::glowPrimary,   &VelmoraThemePalette::glowSecondary,
                                     &VelmoraThemePalette::primaryText,   &VelmoraThemePalette::secondaryText,
                                     &VelmoraThemePalette::mutedText,     &VelmoraThemePalette::cardFill,
                                     &VelmoraThemePalette::cardStroke,    &VelmoraThemePalette::linkRowFill,
                                     &VelmoraThemePalette::successAccent, &VelmoraThemePalette::dangerAccent,
                                     &VelmoraThemePalette::infoAccent,    &VelmoraThemePalette::warningText,
                                     &VelmoraThemePalette::badgeText,     &VelmoraThemePalette::overlayScrim};

QColor between(const QColor &from, const QColor &to, double part)
{
    const auto component = [part](float a, float b) {
        return std::clamp(std::lerp(a, b, static_cast<float>(part)), 0.0F, 1.0F);
    };
    return QColor::fromRgbF(component(from.redF(), to.redF()), component(from.greenF(), to.greenF()),
                            component(from.blueF(), to.blueF()), component(from.alphaF(), to.alphaF()));
}

struct Theme {
    QString english;
    QString german;
    VelmoraThemePalette (*palette)(const SystemColors &system);
};

Theme themeOf(VelmoraTheme theme)
{
    switch (theme) {
    case VelmoraTheme::aurora:
        return {u"Aurora"_s, u"Aurora"_s, aurora};
    case VelmoraTheme::ocean:
        return {u"Ocean"_s, u"Ocean"_s, ocean};
    case VelmoraTheme::light:
        return {u"Light"_s, u"Hell"_s, light};
    case VelmoraTheme::graphite:
        break;
    }
    return {u"Graphite"_s, u"Graphit"_s, graphite};
}

} // namespace

VelmoraThemePalette VelmoraThemePalette::mixed(const VelmoraThemePalette &from, const VelmoraThemePalette &to,
                                               double part)
{
    VelmoraThemePalette palette = to;
    for (QColor VelmoraThemePalette::*color : singleColors)
        palette.*color = between(from.*color, to.*color, part);
    for (QList<QColor> VelmoraThemePalette::*colors :
         {&VelmoraThemePalette::backgroundColors, &VelmoraThemePalette::switchColors})
        for (qsizetype i = 0; i < std::min((from.*colors).size(), (to.*colors).size()); ++i)
            (palette.*colors)[i] = between((from.*colors)[i], (to.*colors)[i], part);
    palette.materialOpacity = std::lerp(from.materialOpacity, to.materialOpacity, std::clamp(part, 0.0, 1.0));
    return palette;
}

VelmoraThemePalette VelmoraThemePalette::withIncreasedContrast() const
{
    VelmoraThemePalette palette = *this;
    palette.secondaryText = palette.mutedText = primaryText;
    palette.cardStroke = at(primaryText, 0.7);
    palette.increasedContrast = true;
    return palette;
}

VelmoraThemePalette VelmoraThemePalette::of(VelmoraTheme theme, const SystemColors &system)
{
    return themeOf(theme).palette(system);
}

QString VelmoraThemePalette::themeName(VelmoraTheme theme, AppLanguage language)
{
    const Theme named = themeOf(theme);
    return LocalizedStrings::choose(named.english, named.german, language);
}
