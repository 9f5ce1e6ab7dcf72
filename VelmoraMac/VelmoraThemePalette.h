#pragma once

#include "SystemColors.h"

#include <VelmoraMac/State/AppTypes.h>

#include <QColor>
#include <QList>
#include <qqmlintegration.h>

// The colours of one theme. A plain value; make another one when the theme or the desktop's appearance changes.
//
// A new theme is an enumerator of VelmoraTheme, and its name and palette in VelmoraThemePalette.cpp.
struct VelmoraThemePalette {
    Q_GADGET
    QML_VALUE_TYPE(velmoraThemePalette)
    Q_PROPERTY(QList<QColor> backgroundColors MEMBER backgroundColors)
    Q_PROPERTY(QColor glowPrimary MEMBER glowPrimary)
    Q_PROPERTY(QColor glowSecondary MEMBER glowSecondary)
    Q_PROPERTY(QColor primaryText MEMBER primaryText)
    Q_PROPERTY(QColor secondaryText MEMBER secondaryText)
    Q_PROPERTY(QColor mutedText MEMBER mutedText)
    Q_PROPERTY(QColor cardFill MEMBER cardFill)
    Q_PROPERTY(QColor cardStroke MEMBER cardStroke)
    Q_PROPERTY(QColor linkRowFill MEMBER linkRowFill)
    Q_PROPERTY(QColor successAccent MEMBER successAccent)
    Q_PROPERTY(QColor dangerAccent MEMBER dangerAccent)
    Q_PROPERTY(QColor infoAccent MEMBER infoAccent)
    Q_PROPERTY(QColor warningText MEMBER warningText)
    Q_PROPERTY(QColor badgeText MEMBER badgeText)
    Q_PROPERTY(QColor overlayScrim MEMBER overlayScrim)
    Q_PROPERTY(double materialOpacity MEMBER materialOpacity)
    Q_PROPERTY(QList<QColor> switchColors MEMBER switchColors)

public:
    QList<QColor> backgroundColors; // Three, from top to bottom of the backdrop.
    QColor glowPrimary;
    QColor glowSecondary;
    QColor primaryText;
    QColor secondaryText;
    QColor mutedText;
    QColor cardFill;
    QColor cardStroke;
    QColor linkRowFill;
    QColor successAccent;
    QColor dangerAccent;
    QColor infoAccent;
    QColor warningText;
    QColor badgeText;
    QColor overlayScrim;
    double materialOpacity = 1;
    QList<QColor> switchColors;     // Two: the gradient of a switch that is on.
    bool increasedContrast = false; // For people who need more of it.

    // Some colours of a theme are the system's and follow the desktop's appearance.
    [[nodiscard]] static VelmoraThemePalette of(Velmora::VelmoraTheme theme, const SystemColors &system);
    // The colours `part` of the way from one palette to another. A spring may go a little beyond either end.
    [[nodiscard]] static VelmoraThemePalette mixed(const VelmoraThemePalette &from,
                                                   const VelmoraThemePalette &to, double part);
    // The same colours for people who need more contrast: texts are opaque, outlines seen from afar.
    [[nodiscard]] VelmoraThemePalette withIncreasedContrast() const;
    // As the settings name the theme.
    [[nodiscard]] static QString themeName(Velmora::VelmoraTheme theme, Velmora::AppLanguage language);

    // Whether dark text stands on light grounds.
    [[nodiscard]] bool isLight() const { return primaryText.lightnessF() < 0.5F; }

    bool operator==(const VelmoraThemePalette &) const = default;
};
