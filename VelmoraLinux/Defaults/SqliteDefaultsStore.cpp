#include "SqliteDefaultsStore.h"

#include "PrivateFiles.h"

#include <utility>

using namespace Qt::StringLiterals;

using Outcome = SqliteFile::Outcome;

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
    return read<QByteArray>(key);
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

void SqliteDefaultsStore::setData(QStringView key, const QByteArray &value)
{
    // A null array counts as an empty one; SQLite would store it as NULL.
    set(key, value.isNull() ? QByteArray("") : value);
}

void SqliteDefaultsStore::remove(QStringView key)
{
    // Texts that the user removes shall also disappear from stores that were set aside for damage.
    if (const auto old = values_.take(key.toString()); std::holds_alternative<QByteArray>(old))
        SqliteFile::eraseSetAside(path_);
    unwritten_.insert(key.toString(), std::nullopt);
    writeChanges();
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

void SqliteDefaultsStore::set(QStringView key, DefaultsValue value)
{
    values_.insert(key.toString(), value);
    unwritten_.insert(key.toString(), std::move(value));
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
    if (outcome == Outcome::done)
        outcome = file_.write(unwritten_);
    if (outcome == Outcome::done)
        unwritten_.clear();
    else
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
