#include "SqliteDefaultsStore.h"

#include "PrivateFiles.h"

#include <algorithm>
#include <utility>

using namespace Qt::StringLiterals;

using Outcome = SqliteFile::Outcome;

namespace {

// Whether something of a text that is private is no longer part of the value.
bool losesText(const DefaultsValue &old, const std::optional<DefaultsValue> &value)
{
    if (const auto *text = std::get_if<QString>(&old))
        return !text->isEmpty() && value != old;
    const auto *pieces = std::get_if<QByteArrayList>(&old);
    if (pieces == nullptr)
        return false;
    const auto *kept = value ? std::get_if<QByteArrayList>(&*value) : nullptr;
    return kept == nullptr || std::any_of(pieces->begin(), pieces->end(),
                                          [kept](const QByteArray &piece) { return !kept->contains(piece); });
}

} // namespace

SqliteDefaultsStore::SqliteDefaultsStore(const QString &folder)
    : folder_(folder)
    , path_(folder + u"/defaults.sqlite"_s)
{
    Outcome outcome = openFile();
    if (outcome == Outcome::damaged) {
        setAside();
        outcome = openFile();
    }
    if (outcome == Outcome::refused)
        SqliteFile::readCopy(path_, values_);
    isNewer_ = outcome == Outcome::newer;
    isWritable_ = outcome == Outcome::done;
    if (!isWritable_)
        report(Problem::notWritable);
}

SqliteDefaultsStore::~SqliteDefaultsStore()
{
    if (!unwritten_.isEmpty())
        (void)tryToWrite();
}

std::optional<bool> SqliteDefaultsStore::boolean(QStringView key) const
{
    return read<bool>(key);
}

std::optional<qint64> SqliteDefaultsStore::integer(QStringView key) const
{
    return read<qint64>(key);
}

std::optional<QString> SqliteDefaultsStore::string(QStringView key) const
{
    return read<QString>(key);
}

std::optional<QByteArray> SqliteDefaultsStore::data(QStringView key) const
{
    const auto pieces = read<QByteArrayList>(key);
    return pieces ? std::optional(pieces->size() == 1 ? pieces->first() : pieces->join()) : std::nullopt;
}

void SqliteDefaultsStore::setBoolean(QStringView key, bool value)
{
    set(key, value);
}

void SqliteDefaultsStore::setInteger(QStringView key, qint64 value)
{
    set(key, value);
}

void SqliteDefaultsStore::setString(QStringView key, const QString &value)
{
    set(key, value);
}

void SqliteDefaultsStore::setPieces(QStringView key, const QByteArrayList &pieces)
{
    set(key, pieces);
}

void SqliteDefaultsStore::remove(QStringView key)
{
    const QString name = key.toString();
    // Texts that the user removes shall also disappear from stores that were set aside for damage.
    if (const auto old = values_.constFind(name);
        old != values_.constEnd() && std::holds_alternative<QByteArrayList>(*old))
        SqliteFile::eraseSetAside(path_);
    change(name, std::nullopt);
}

void SqliteDefaultsStore::setProblemHandler(ProblemHandler handler)
{
    handler_ = std::move(handler);
    for (const Problem problem : std::exchange(unreported_, {}))
        report(problem);
}

template<typename Value>
std::optional<Value> SqliteDefaultsStore::read(QStringView key) const
{
    const auto found = values_.constFind(key.toString());
    if (found == values_.constEnd() || !std::holds_alternative<Value>(*found))
        return std::nullopt;
    return std::get<Value>(*found);
}

void SqliteDefaultsStore::set(QStringView key, const DefaultsValue &value)
{
    change(key.toString(), value);
}

void SqliteDefaultsStore::change(const QString &key, const std::optional<DefaultsValue> &value)
{
    const auto old = values_.constFind(key);
    removesText_ = removesText_ || (old != values_.constEnd() && losesText(*old, value));
    if (value)
        values_.insert(key, *value);
    else
        values_.remove(key);
    unwritten_.insert(key, value);
    if (groups_ == 0)
        writeChanges();
}

void SqliteDefaultsStore::endGroup()
{
    if (--groups_ == 0 && !unwritten_.isEmpty())
        writeChanges();
}

void SqliteDefaultsStore::writeChanges()
{
    Outcome outcome = tryToWrite();
    if (outcome == Outcome::damaged) {
        setAside();
        outcome = tryToWrite();
    }
    const bool wasWritable = std::exchange(isWritable_, outcome == Outcome::done);
    if (wasWritable && !isWritable_)
        report(Problem::notWritable);
    else if (!wasWritable && isWritable_ && recovered_)
        recovered_();
}

Outcome SqliteDefaultsStore::tryToWrite()
{
    if (isNewer_)
        return Outcome::newer;
    if (file_.isOpen() && !file_.isStillInPlace()) {
        file_.closeWithoutCheckpoint();
        markAllUnwritten();
    }
    Outcome outcome = file_.isOpen() ? Outcome::done : openFile();
    const qsizetype all = unwritten_.size();
    if (outcome == Outcome::done)
        outcome = file_.write(unwritten_, removesText_);
    if (outcome == Outcome::done)
        removesText_ = false;
    else if (unwritten_.size() == all) // Nothing can be written at present; else it is one value's fault.
        file_.close();
    return outcome;
}

// Opens the file and loads its values; values set in the meantime take precedence.
Outcome SqliteDefaultsStore::openFile()
{
    if (!PrivateFiles::prepareFolder(folder_))
        return Outcome::refused;
    DefaultsValues stored;
    const Outcome outcome = file_.open(path_, stored);
    if (outcome != Outcome::done && outcome != Outcome::newer)
        return outcome;
    for (auto row = stored.cbegin(); row != stored.cend(); ++row) {
        if (!unwritten_.contains(row.key()))
            values_.insert(row.key(), row.value());
    }
    return outcome;
}

void SqliteDefaultsStore::setAside()
{
    file_.close();
    if (SqliteFile::setAside(path_).isEmpty())
        return;
    markAllUnwritten();
    report(Problem::setAside);
}

void SqliteDefaultsStore::markAllUnwritten()
{
    for (auto value = values_.cbegin(); value != values_.cend(); ++value)
        unwritten_.insert(value.key(), value.value());
}

void SqliteDefaultsStore::report(Problem problem)
{
    if (handler_)
        handler_(problem);
    else
        unreported_.append(problem);
}
