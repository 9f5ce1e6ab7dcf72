#pragma once

#include <QList>
#include <QMetaEnum>
#include <QObject>
#include <QString>
#include <qqmlintegration.h>

#include <optional>

// The application's enumerations. QML reaches them scoped, as in Velmora.AppLanguage.german.
//
// An enumerator's name is also its stored form: see rawValue().
namespace Velmora {
Q_NAMESPACE
QML_ELEMENT

// The settings window's tabs, in their order.
enum class AppTab { general, cleaning, history };
Q_ENUM_NS(AppTab)

// The language of every visible text; `system` follows the desktop.
enum class AppLanguage { system, english, german };
Q_ENUM_NS(AppLanguage)

// The colour themes, in the order in which they are offered.
enum class VelmoraTheme { aurora, ocean, light, graphite };
Q_ENUM_NS(VelmoraTheme)

// Whose copies can be seen in this session: every program's, only those of programs made for X11, nobody's.
enum class ClipboardReach { all, onlyX11, none };
Q_ENUM_NS(ClipboardReach)
} // namespace Velmora

using Velmora::AppLanguage;
using Velmora::AppTab;
using Velmora::ClipboardReach;
using Velmora::VelmoraTheme;

// The text under which an enumerator is stored and reported: its name.
template<typename Enum>
[[nodiscard]] QString rawValue(Enum value)
{
    return QString::fromLatin1(QMetaEnum::fromType<Enum>().valueToKey(static_cast<int>(value)));
}

// Every enumerator, in the order of declaration.
template<typename Enum>
[[nodiscard]] QList<int> allValues()
{
    const QMetaEnum meta = QMetaEnum::fromType<Enum>();
    QList<int> values;
    for (int i = 0; i < meta.keyCount(); ++i)
        values.append(meta.value(i));
    return values;
}

// The enumerator stored as `text`; nothing for any other text.
template<typename Enum>
[[nodiscard]] std::optional<Enum> fromRawValue(QStringView text)
{
    const QMetaEnum meta = QMetaEnum::fromType<Enum>();
    for (int i = 0; i < meta.keyCount(); ++i) {
        if (text == QLatin1String(meta.key(i)))
            return static_cast<Enum>(meta.value(i));
    }
    return {};
}
