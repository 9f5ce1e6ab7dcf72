#pragma once

#include "AppTypes.h"

#include <VelmoraPlatform/DefaultsStore.h>

#include <QByteArrayList>

#include <type_traits>

// Settings in the form in which the store keeps them: enumerators by their names, see rawValue().
namespace StoredValue {

// The value under `key`; `otherwise` when the key is missing or holds something else.
template<typename Value>
[[nodiscard]] Value read(const DefaultsStore &store, QStringView key, const Value &otherwise)
{
    if constexpr (std::is_same_v<Value, bool>)
        return store.boolean(key).value_or(otherwise);
    else if constexpr (std::is_enum_v<Value>)
        return fromRawValue<Value>(store.string(key).value_or(QString())).value_or(otherwise);
    else
        return store.string(key).value_or(otherwise);
}

template<typename Value>
void write(DefaultsStore &store, QStringView key, const Value &value)
{
    if constexpr (std::is_same_v<Value, bool>)
        store.setBoolean(key, value);
    else if constexpr (std::is_enum_v<Value>)
        store.setString(key, rawValue(value));
    else
        store.setString(key, value);
}

// The pieces of a JSON array whose elements are encoded already; each element is one.
[[nodiscard]] inline QByteArrayList jsonArray(const QByteArrayList &elements)
{
    QByteArrayList pieces;
    for (const QByteArray &element : elements)
        pieces << QByteArray(pieces.isEmpty() ? "[" : ",") << element;
    pieces << QByteArray(pieces.isEmpty() ? "[]" : "]");
    return pieces;
}

} // namespace StoredValue
