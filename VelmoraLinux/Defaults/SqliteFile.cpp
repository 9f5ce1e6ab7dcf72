#include "SqliteFile.h"

#include "PrivateFiles.h"
#include "SqliteStatement.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <sys/stat.h>

#include <array>
#include <cstdio>
#include <limits>

using namespace Qt::StringLiterals;

namespace {

using Outcome = SqliteFile::Outcome;

constexpr int busyTimeoutMs = 5;
constexpr off_t maximumCopyBytes = 1 << 28; // Of a store that can only be read through a copy.
constexpr int applicationId = 0x564C4D52;   // "VLMR"
constexpr int schemaVersion = 2;            // 1 had no pieces.
constexpr std::array suffixes = {"-wal", "-shm",
                                 ""}; // The database is renamed last: without it the others are meaningless.

constexpr auto schema = "CREATE TABLE IF NOT EXISTS defaults("
                        " key TEXT PRIMARY KEY NOT NULL,"
                        " type TEXT NOT NULL CHECK(type IN ('bool', 'integer', 'string', 'data')),"
                        " value ANY NOT NULL) STRICT;"
                        "PRAGMA application_id=0x564C4D52;"
                        "PRAGMA user_version=2;"
                        "COMMIT";

constexpr auto foreignObjects =
    "SELECT count(*) FROM sqlite_master WHERE NOT (type='table' AND name IN ('defaults', 'pieces', 'lists'))"
    " AND NOT (type='index' AND tbl_name IN ('defaults', 'lists') AND sql IS NULL)";
// The small values first. Values that exceed the limit are not loaded: a store of some gigabytes would take
// all memory.
constexpr std::array allValues = {
    "SELECT key, type, value FROM defaults WHERE length(value) <= 65536 LIMIT 10000",
    "SELECT key, type, value FROM defaults WHERE length(value) > 65536 AND length(value) <= 33554432 LIMIT "
    "1000"};
constexpr qsizetype maximumLoadedBytes = 1 << 26;
constexpr int writesUntilTidying = 200;

Outcome outcomeOf(int code)
{
    switch (code) {
    case SQLITE_OK:
    case SQLITE_DONE:
    case SQLITE_ROW:
        return Outcome::done;
    case SQLITE_CORRUPT:
    case SQLITE_NOTADB:
    case SQLITE_ERROR: // The table has other columns than ours.
        return Outcome::damaged;
    default:
        return Outcome::refused;
    }
}

// A private folder (0700), in the session's runtime folder where there is one: that is in memory, so a killed
// process leaves no text on the disk.
std::unique_ptr<QTemporaryDir> temporaryFolder()
{
    const QString runtime = qEnvironmentVariable("XDG_RUNTIME_DIR");
    auto folder = std::make_unique<QTemporaryDir>(runtime + QStringLiteral("/velmora-XXXXXX"));
    if (!QDir::isAbsolutePath(runtime) || !folder->isValid())
        folder = std::make_unique<QTemporaryDir>();
    return folder;
}

Outcome run(sqlite3 *database, const char *text)
{
    return outcomeOf(sqlite3_exec(database, text, nullptr, nullptr, nullptr));
}

Outcome readNumber(sqlite3 *database, const char *text, qint64 &number)
{
    SqliteStatement statement(database, text);
    const int code = statement.step();
    if (code == SQLITE_ROW)
        number = statement.integer(0);
    return outcomeOf(code);
}

std::optional<DefaultsValue> decode(const QByteArray &type, const SqliteStatement &row, int column)
{
    const int stored = row.type(column);
    if (type == "bool" && stored == SQLITE_INTEGER)
        return row.integer(column) != 0;
    if (type == "integer" && stored == SQLITE_INTEGER)
        return row.integer(column);
    if (type == "string" && stored == SQLITE_TEXT)
        return QString::fromUtf8(row.blob(column));
    if (type == "data" && stored == SQLITE_BLOB)
        return QByteArrayList{row.blob(column)};
    return std::nullopt; // Not written by us: the row is left alone.
}

// Also true for a link that leads nowhere.
bool exists(const QString &path)
{
    struct stat status = {};
    return lstat(QFile::encodeName(path).constData(), &status) == 0;
}

void bindPlain(SqliteStatement &statement, int place, const DefaultsValue &value)
{
    if (const auto *text = std::get_if<QString>(&value))
        statement.bind(place, *text);
    else if (const auto *number = std::get_if<qint64>(&value))
        statement.bind(place, *number);
    else
        statement.bind(place, std::get<bool>(value));
}

const char *typeName(const DefaultsValue &value)
{
    static constexpr std::array names = {"bool", "integer", "string", "data"}; // In the order of the variant.
    return names.at(value.index());
}

} // namespace

void SqliteFile::Closer::operator()(sqlite3 *database) const
{
    sqlite3_close(database);
}

SqliteFile::~SqliteFile()
{
    close();
}

Outcome SqliteFile::open(const QString &path, DefaultsValues &values)
{
    path_ = path;
    for (const char *suffix : suffixes) {
        if (!PrivateFiles::isRegularOrMissing(path + QLatin1StringView(suffix)))
            return Outcome::damaged;
    }
    if (!PrivateFiles::prepareFile(path))
        return Outcome::refused;
    sqlite3 *database = nullptr;
    const int code = sqlite3_open_v2(QFile::encodeName(path).constData(), &database,
                                     SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOMUTEX, nullptr);
    database_.reset(database); // SQLite returns a handle to release after a failure, too.
    Outcome outcome = outcomeOf(code);
    if (outcome == Outcome::done) {
        sqlite3_busy_timeout(database, busyTimeoutMs);
        forbidForeignCode();
        keepLogOnClose(true); // Until the file is known to be ours and intact.
        outcome = checkSchema();
    }
    if (outcome == Outcome::done || outcome == Outcome::newer) {
        const Outcome read = load(values);
        if (outcome == Outcome::done)
            outcome = read;
    }
    if (outcome != Outcome::done) {
        close();
        return outcome;
    }
    keepLogOnClose(false);
    for (const char *suffix : suffixes)
        PrivateFiles::restrictFile(path + QLatin1StringView(suffix));
    struct stat status = {};
    if (stat(QFile::encodeName(path).constData(), &status) == 0) {
        device_ = status.st_dev;
        inode_ = status.st_ino;
    }
    return Outcome::done;
}

// Views, triggers and functions named in the schema would run when the table is read or written.
void SqliteFile::forbidForeignCode()
{
    for (const int option :
         {SQLITE_DBCONFIG_ENABLE_VIEW, SQLITE_DBCONFIG_ENABLE_TRIGGER, SQLITE_DBCONFIG_TRUSTED_SCHEMA})
        sqlite3_db_config(database_.get(), option, 0, nullptr);
}

Outcome SqliteFile::checkSchema()
{
    qint64 application = 0;
    qint64 version = 0;
    qint64 tables = 0;
    qint64 foreign = 0; // Views, triggers and tables that are not ours.
    Outcome outcome = readNumber(database_.get(), "PRAGMA application_id", application);
    if (outcome == Outcome::done)
        outcome = readNumber(database_.get(), "PRAGMA user_version", version);
    if (outcome == Outcome::done)
        outcome = readNumber(database_.get(), "SELECT count(*) FROM sqlite_master", tables);
    if (outcome == Outcome::done)
        outcome = readNumber(database_.get(), foreignObjects, foreign);
    if (outcome != Outcome::done)
        return outcome;
    const bool isEmpty = application == 0 && version == 0 && tables == 0;
    if (!isEmpty && application != applicationId)
        return Outcome::damaged;
    if (version > schemaVersion)
        return Outcome::newer;
    if (foreign != 0)
        return Outcome::damaged;
    return createSchema();
}

// Runs for an existing file, too: this write shows early whether writing is possible. The first step is for a new
// file only: the journal that SQLite needs to make it has to be gone from the disk before there is a write-ahead log,
// or it could come back with a cut of the power and undo everything.
Outcome SqliteFile::createSchema()
{
    for (const char *step :
         {"PRAGMA synchronous=EXTRA", "PRAGMA journal_mode=WAL", "PRAGMA synchronous=NORMAL",
          "PRAGMA secure_delete=ON", "PRAGMA wal_autocheckpoint=0", "BEGIN IMMEDIATE", StoredPieces::schema,
          schema}) {
        const Outcome outcome = run(database_.get(), step);
        if (outcome != Outcome::done)
            return outcome;
    }
    return Outcome::done;
}

Outcome SqliteFile::load(DefaultsValues &values)
{
    qsizetype budget = maximumLoadedBytes;
    int code = SQLITE_DONE;
    for (const char *query : allValues) {
        SqliteStatement rows(database_.get(), query);
        for (code = rows.step(); code == SQLITE_ROW && budget >= 0; code = rows.step()) {
            budget -= rows.size(2);
            if (auto value = decode(rows.blob(1), rows, 2))
                values.insert(QString::fromUtf8(rows.blob(0)), *std::move(value));
        }
        if (code != SQLITE_DONE)
            break;
    }
    if (code == SQLITE_DONE)
        code = pieces_.load(database_.get(), values, budget);
    return outcomeOf(code);
}

Outcome SqliteFile::write(DefaultsChanges &changes, bool removesText)
{
    {
        const auto lock = tidier_.lockForWriting();
        const Outcome outcome = writeTogether(changes);
        if (outcome == Outcome::done)
            changes.clear();
        else if (outcome == Outcome::refused && changes.size() > 1)
            writeOneByOne(changes);
        if (!changes.isEmpty())
            return outcome;
    }
    // Text that left the history must not stay readable in the write-ahead log. The database's own pages are
    // overwritten by secure_delete.
    ++writesSinceTidying_;
    if (removesText || writesSinceTidying_ >= writesUntilTidying || !tidier_.isTidy()) {
        writesSinceTidying_ = 0;
        tidier_.request(QFile::encodeName(path_));
    }
    return Outcome::done;
}

Outcome SqliteFile::writeTogether(const DefaultsChanges &changes)
{
    Outcome outcome = run(database_.get(), "BEGIN IMMEDIATE");
    if (outcome != Outcome::done)
        return outcome;
    for (auto change = changes.cbegin(); change != changes.cend() && outcome == Outcome::done; ++change)
        outcome = writeOne(change.key(), change.value());
    if (outcome == Outcome::done)
        outcome = run(database_.get(), "COMMIT");
    if (outcome == Outcome::done) {
        pieces_.keepWritten();
        return outcome;
    }
    if (outcome == Outcome::damaged)
        keepLogOnClose(true);
    (void)run(database_.get(), "ROLLBACK");
    pieces_.forgetWritten();
    return outcome;
}

// A value that cannot be written, for its size above all, must not keep the others from being written.
void SqliteFile::writeOneByOne(DefaultsChanges &changes)
{
    for (const QString &key : changes.keys()) {
        if (writeTogether({{key, changes.value(key)}}) == Outcome::done)
            changes.remove(key);
    }
}

Outcome SqliteFile::writeOne(const QString &key, const std::optional<DefaultsValue> &value)
{
    const auto *pieces = value ? std::get_if<QByteArrayList>(&*value) : nullptr;
    const bool isInPieces = pieces != nullptr && !StoredPieces::isShort(*pieces);
    const int code =
        isInPieces ? pieces_.write(database_.get(), key, *pieces) : pieces_.remove(database_.get(), key);
    if (code != SQLITE_DONE)
        return outcomeOf(code);
    if (!value || isInPieces) {
        SqliteStatement removal(database_.get(), "DELETE FROM defaults WHERE key=?1");
        removal.bind(1, key);
        return outcomeOf(removal.step());
    }
    SqliteStatement row(database_.get(),
                        "INSERT INTO defaults(key, type, value) VALUES(?1, ?2, ?3)"
                        " ON CONFLICT(key) DO UPDATE SET type=excluded.type, value=excluded.value");
    row.bind(1, key);
    row.bind(2, QString::fromLatin1(typeName(*value)));
    const QByteArray data = pieces != nullptr ? pieces->join() : QByteArray();
    if (pieces != nullptr)
        row.bind(3, data);
    else
        bindPlain(row, 3, *value);
    return outcomeOf(row.step());
}

void SqliteFile::close()
{
    tidier_.finish();
    database_.reset();
}

void SqliteFile::closeWithoutCheckpoint()
{
    tidier_.cancel();
    if (database_)
        keepLogOnClose(true);
    database_.reset();
}

bool SqliteFile::isStillInPlace() const
{
    struct stat status = {};
    return stat(QFile::encodeName(path_).constData(), &status) == 0 && status.st_dev == device_ &&
           status.st_ino == inode_;
}

void SqliteFile::keepLogOnClose(bool keep)
{
    sqlite3_db_config(database_.get(), SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, keep ? 1 : 0, nullptr);
}

void SqliteFile::readCopy(const QString &path, DefaultsValues &values)
{
    const auto place = temporaryFolder();
    struct stat status = {};
    if (!place->isValid() || stat(QFile::encodeName(path).constData(), &status) != 0 ||
        !S_ISREG(status.st_mode) || status.st_size > maximumCopyBytes)
        return;
    const QString copy = place->filePath(QStringLiteral("copy"));
    if (PrivateFiles::isRegularOrMissing(path + QStringLiteral("-wal")))
        QFile::copy(path + QStringLiteral("-wal"), copy + QStringLiteral("-wal"));
    if (!QFile::copy(path, copy))
        return;
    for (const char *suffix : suffixes) // A copy of a read-only file is read-only, too.
        QFile::setPermissions(copy + QLatin1StringView(suffix), QFile::ReadOwner | QFile::WriteOwner);
    DefaultsValues read;
    SqliteFile file;
    const Outcome outcome = file.open(copy, read);
    if (outcome == Outcome::done || outcome == Outcome::newer)
        values = std::move(read);
}

QString SqliteFile::setAside(const QString &path)
{
    const QFileInfo file(path);
    const auto nameFor = [&file](int number) {
        return u"%1/%2.damaged-%3.%4"_s.arg(file.path(), file.completeBaseName(), QString::number(number),
                                            file.suffix());
    };
    const auto isTaken = [](const QString &name) {
        return std::any_of(suffixes.begin(), suffixes.end(),
                           [&name](const char *suffix) { return exists(name + QLatin1StringView(suffix)); });
    };
    int number = 1;
    while (isTaken(nameFor(number)))
        ++number;
    const QString name = nameFor(number);
    for (const char *suffix : suffixes)
        (void)std::rename(QFile::encodeName(path + QLatin1StringView(suffix)).constData(),
                          QFile::encodeName(name + QLatin1StringView(suffix)).constData());
    return exists(path) ? QString() : name;
}

void SqliteFile::eraseSetAside(const QString &path)
{
    const QFileInfo file(path);
    const QDir folder(file.path());
    const QString pattern = QStringLiteral("%1.damaged-*").arg(file.completeBaseName());
    for (const QString &name : folder.entryList({pattern}, QDir::Files | QDir::System | QDir::Hidden))
        PrivateFiles::eraseFile(folder.filePath(name));
}
