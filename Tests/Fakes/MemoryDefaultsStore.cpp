#include "MemoryDefaultsStore.h"

#include <utility>

template<typename Type>
std::optional<Type> MemoryDefaultsStore::read(QStringView key) const
{
    const auto found = values_.constFind(key.toString());
    if (found == values_.cend() || !std::holds_alternative<Type>(*found))
        return {};
    return std::get<Type>(*found);
}

std::optional<bool> MemoryDefaultsStore::boolean(QStringView key) const
{
    return read<bool>(key);
}

std::optional<qint64> MemoryDefaultsStore::integer(QStringView key) const
{
    return read<qint64>(key);
}

std::optional<QString> MemoryDefaultsStore::string(QStringView key) const
{
    return read<QString>(key);
}

std::optional<QByteArray> MemoryDefaultsStore::data(QStringView key) const
{
    return read<QByteArray>(key);
}

void MemoryDefaultsStore::write(QStringView key, const Value &value)
{
    values_[key.toString()] = value;
    writes.append(key.toString());
    if (failsWrites)
        fail(Problem::notWritable);
}

void MemoryDefaultsStore::setBoolean(QStringView key, bool value)
{
    write(key, value);
}

void MemoryDefaultsStore::setInteger(QStringView key, qint64 value)
{
    write(key, value);
}

void MemoryDefaultsStore::setString(QStringView key, const QString &value)
{
    write(key, value);
}

void MemoryDefaultsStore::setPieces(QStringView key, const QByteArrayList &value)
{
    pieces = value;
    write(key, value.join());
}

void MemoryDefaultsStore::remove(QStringView key)
{
    values_.remove(key.toString());
    writes.append(u'-' + key.toString());
}

void MemoryDefaultsStore::setProblemHandler(ProblemHandler handler)
{
    problemHandler_ = std::move(handler);
    if (problemHandler_ && unheard_)
        problemHandler_(*std::exchange(unheard_, std::nullopt));
}

QStringList MemoryDefaultsStore::keys() const
{
    QStringList keys = values_.keys();
    keys.sort();
    return keys;
}

void MemoryDefaultsStore::fail(Problem problem)
{
    if (problemHandler_)
        problemHandler_(problem);
    else
        unheard_ = problem;
}
