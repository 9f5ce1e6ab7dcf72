#pragma once

#include <VelmoraMac/State/AppTypes.h>
#include <VelmoraMac/SystemColors.h>
#include <VelmoraMac/VelmoraThemePalette.h>

#include <QObject>
#include <qqmlintegration.h>

class QQmlEngine;

// How the views shall look: the desktop's appearance, how much may move, and the user's theme. One
// for each QML engine.
//
// The owner of the engine keeps all three up to date; the views follow at once.
class Surroundings : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_SINGLETON
    Q_PROPERTY(bool darkAppearance READ darkAppearance WRITE setDarkAppearance NOTIFY darkAppearanceChanged)
    Q_PROPERTY(bool reducedMotion READ reducedMotion WRITE setReducedMotion NOTIFY reducedMotionChanged)
    Q_PROPERTY(bool increasedContrast READ increasedContrast WRITE setIncreasedContrast NOTIFY paletteChanged)
    Q_PROPERTY(bool blendsWindows READ blendsWindows WRITE setBlendsWindows NOTIFY blendsWindowsChanged)
    // Of forms, windows and menus: the system's in the colours of the theme.
    Q_PROPERTY(SystemColors colors READ colors NOTIFY paletteChanged)
    // The fill of a card on the popover's panel.
    Q_PROPERTY(QColor cardColor READ cardColor NOTIFY paletteChanged)
    // The colours of the theme under this appearance.
    Q_PROPERTY(VelmoraThemePalette palette READ palette NOTIFY paletteChanged)
    // Every VelmoraTheme, in the order in which they are offered.
    Q_PROPERTY(QList<int> themes READ themes CONSTANT)

public:
    explicit Surroundings(QObject *parent = nullptr);

    // The object of `engine`. Null only when the module is not linked in.
    [[nodiscard]] static Surroundings *in(QQmlEngine &engine);
    // The object of the engine that made `item`. Null for an object that QML did not create.
    [[nodiscard]] static Surroundings *of(const QObject *item);

    [[nodiscard]] bool darkAppearance() const { return darkAppearance_; }

    void setDarkAppearance(bool dark);

    // True: springs and repeated motion become short fades.
    [[nodiscard]] bool reducedMotion() const { return reducedMotion_; }

    void setReducedMotion(bool reduced);

    // True: texts are opaque, outlines are seen from afar, and the guidelines' stricter ratios hold.
    [[nodiscard]] bool increasedContrast() const { return increasedContrast_; }

    void setIncreasedContrast(bool increased);

    // Whether translucent parts of a window show what is behind it. If not, a panel is opaque inside its shape,
    // and nothing of it can fade.
    [[nodiscard]] bool blendsWindows() const { return blendsWindows_; }

    void setBlendsWindows(bool blends);

    [[nodiscard]] SystemColors colors() const { return colors_; }

    [[nodiscard]] QColor cardColor() const { return cardColor_; }

    // On the way from one theme to another what is between the two.
    [[nodiscard]] VelmoraThemePalette palette() const { return palette_; }

    // At once.
    void setTheme(Velmora::VelmoraTheme theme);
    // Shows `part`, 0 to 1, of the way from other colours to those of the theme.
    void fadeFrom(const VelmoraThemePalette &palette, double part);

    [[nodiscard]] static QList<int> themes() { return allValues<Velmora::VelmoraTheme>(); }

    Q_INVOKABLE static QString themeName(Velmora::VelmoraTheme theme, Velmora::AppLanguage language);
    // `color` with `brightness` added to each component and its saturation multiplied, keeping the luminance. A
    // translucent one covers more of what is behind it, too: most are white, which cannot get lighter.
    Q_INVOKABLE static QColor lit(const QColor &color, double brightness, double saturation);
    // `tint`, made darker or lighter as far as small text of that colour needs it on the theme's panel.
    Q_INVOKABLE static QColor legible(const QColor &tint, const VelmoraThemePalette &palette);
    // The same for the line in the main card, which is translucent and stands on rings and light.
    Q_INVOKABLE static QColor legibleOnLight(const QColor &tint, const VelmoraThemePalette &palette);
    // The same for small text on the panel itself.
    Q_INVOKABLE static QColor legibleOnPanel(const QColor &tint, const VelmoraThemePalette &palette);
    // What is drawn between the seal and its glow, so that its symbol can be seen.
    Q_INVOKABLE static QColor sealShade(const VelmoraThemePalette &palette);
    // The same for the symbol of the seal.
    Q_INVOKABLE static QColor legibleInGlow(const QColor &tint, const VelmoraThemePalette &palette);
    // The same for large text, which needs less.
    Q_INVOKABLE static QColor legibleLarge(const QColor &tint, const VelmoraThemePalette &palette);
    // The same for small text in a link row.
    Q_INVOKABLE static QColor legibleInRow(const QColor &tint, const VelmoraThemePalette &palette);

Q_SIGNALS:
    void darkAppearanceChanged();
    void reducedMotionChanged();
    void blendsWindowsChanged();
    void paletteChanged();

private:
    [[nodiscard]] VelmoraThemePalette themePalette() const;

    void show(const VelmoraThemePalette &palette);

    bool darkAppearance_ = false;
    bool reducedMotion_ = false;
    bool increasedContrast_ = false;
    bool blendsWindows_ = true;
    VelmoraTheme theme_ = VelmoraTheme::graphite;
    VelmoraThemePalette palette_;
    SystemColors colors_; // These two are made of the palette.
    QColor cardColor_;
};
