#pragma once

#include <QColor>
#include <QMetaType>
#include <qqmlintegration.h>

// The desktop's own colours in its light or its dark appearance. A plain value.
struct SystemColors {
    Q_GADGET
    QML_VALUE_TYPE(systemColors)
    Q_PROPERTY(QColor blue MEMBER blue)
    Q_PROPERTY(QColor pink MEMBER pink)
    Q_PROPERTY(QColor orange MEMBER orange)
    Q_PROPERTY(QColor yellow MEMBER yellow)
    Q_PROPERTY(QColor mint MEMBER mint)
    Q_PROPERTY(QColor cyan MEMBER cyan)
    Q_PROPERTY(QColor red MEMBER red)
    Q_PROPERTY(QColor accent MEMBER accent)
    Q_PROPERTY(QColor focus MEMBER focus)
    Q_PROPERTY(QColor problem MEMBER problem)
    Q_PROPERTY(QColor removed MEMBER removed)
    Q_PROPERTY(QColor label MEMBER label)
    Q_PROPERTY(QColor secondaryLabel MEMBER secondaryLabel)
    Q_PROPERTY(QColor separator MEMBER separator)
    Q_PROPERTY(QColor windowBackground MEMBER windowBackground)
    Q_PROPERTY(QColor textBackground MEMBER textBackground)
    Q_PROPERTY(QColor paneFill MEMBER paneFill)
    Q_PROPERTY(QColor cardFill MEMBER cardFill)
    Q_PROPERTY(QColor cardStroke MEMBER cardStroke)
    Q_PROPERTY(QColor controlFill MEMBER controlFill)
    Q_PROPERTY(QColor controlRaised MEMBER controlRaised)
    Q_PROPERTY(QColor buttonFill MEMBER buttonFill)

public:
    QColor blue, pink, orange, yellow, mint, cyan, red;
    QColor accent;  // A fill that carries white text.
    QColor focus;   // Of the ring around what has the keyboard.
    QColor problem; // Of texts that tell of a failure.
    QColor removed; // Of what a cleaning has taken out of a link.
    QColor label;
    QColor secondaryLabel; // Legible as small print on every surface below.
    QColor separator;
    QColor windowBackground;
    QColor textBackground;
    QColor paneFill;                   // The ground of a tab.
    QColor cardFill, cardStroke;       // Sections of a form.
    QColor controlFill, controlRaised; // A track or button, and the part raised above it.
    QColor buttonFill;                 // Of a push button.

    [[nodiscard]] static SystemColors of(bool darkAppearance);
    bool operator==(const SystemColors &) const = default;
};
