#include "SqliteFile.h"

#include "PrivateFiles.h"

#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <sqlite3.h>
#include <sys/stat.h>

#include <array>
#include <limits>

using namespace Qt::StringLiterals;

namespace {

using Outcome = SqliteFile::Outcome;

constexpr int busyTimeoutMs = 5;
constexpr int applicationId = 0x564C4D52; // "VLMR"
constexpr int schemaVersion = 1;
constexpr std::array suffixes = {"-wal", "-shm",
                                 ""}; // The database is renamed last: without it the others are meaningless.

constexpr auto schema = "BEGIN IMMEDIATE;"
                        "CREATE TABLE IF NOT EXISTS defaults("
                        " key TEXT PRIMARY KEY NOT NULL,"
                        " type TEXT NOT NULL CHECK(type IN ('bool', 'integer', 'string', 'data')),"
                        " value ANY NOT NULL) STRICT;"
                        "PRAGMA application_id=0x564C4D52;"
                        "PRAGMA user_version=1;"
                        "COMMIT";

Outcome outcomeOf(int code)
{
    switch (code) {
    case SQLITE_OK:
    case SQLITE_DONE:
    case SQLITE_ROW:
        return Outcome::done;
    case SQLITE_CORRUPT:
    case SQLITE_NOTADB:
        return Outcome::damaged;
    default:
        return Outcome::refused;
    }
}

// A prepared statement; a failure to prepare it is reported by the first step.
class Statement {
public:
    Statement(sqlite3 *database, const char *text)
        : code_(sqlite3_prepare_v2(database, text, -1, &statement_, nullptr))
    {
    }

    ~Statement() { sqlite3_finalize(statement_); }

    Q_DISABLE_COPY_MOVE(Statement)

    int step() { return code_ == SQLITE_OK ? sqlite3_step(statement_) : code_; }

    void bind(int place, bool value) { noteError(sqlite3_bind_int(statement_, place, value)); }

    void bind(int place, qint64 value) { noteError(sqlite3_bind_int64(statement_, place, value)); }

    void bind(int place, const QString &value)
    {
        const QByteArray text = value.toUtf8();
        noteError(sqlite3_bind_text64(statement_, place, text.constData(), sqlite3_uint64(text.size()),
                                      SQLITE_TRANSIENT, SQLITE_UTF8));
    }

    void bind(int place, const QByteArray &value)
    {
        // Never a null pointer: SQLite would store NULL.
        noteError(sqlite3_bind_blob64(statement_, place, value.constData(), sqlite3_uint64(value.size()),
                                      SQLITE_STATIC));
    }

    [[nodiscard]] int type(int column) const { return sqlite3_column_type(statement_, column); }

    [[nodiscard]] qint64 integer(int column) const { return sqlite3_column_int64(statement_, column); }

    [[nodiscard]] QByteArray blob(int column) const
    {
        const auto *bytes = static_cast<const char *>(sqlite3_column_blob(statement_, column));
        return {bytes, sqlite3_column_bytes(statement_, column)};
    }

private:
    void noteError(int code)
    {
        if (code_ == SQLITE_OK)
            code_ = code;
    }

    sqlite3_stmt *statement_ = nullptr;
    int code_ = SQLITE_OK;
};

Outcome run(sqlite3 *database, const char *text)
{
    return outcomeOf(sqlite3_exec(database, text, nullptr, nullptr, nullptr));
}

Outcome readNumber(sqlite3 *database, const char *text, qint64 &number)
{
    Statement statement(database, text);
    const int code = statement.step();
    if (code == SQLITE_ROW)
        number = statement.integer(0);
    return outcomeOf(code);
}

std::optional<DefaultsValue> decode(const QByteArray &type, const Statement &row, int column)
{
    const int stored = row.type(column);
    if (type == "bool" && stored == SQLITE_INTEGER)
        return row.integer(column) != 0;
    if (type == "integer" && stored == SQLITE_INTEGER)
        return row.integer(column);
    if (type == "string" && stored == SQLITE_TEXT)
        return QString::fromUtf8(row.blob(column));
    if (type == "data" && stored == SQLITE_BLOB)
        return row.blob(column);
    return std::nullopt; // Not written by us: the row is left alone.
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

SqliteFile::~SqliteFile() = default;

Outcome SqliteFile::open(const QString &path, DefaultsValues &values)
{
    path_ = path;
    if (!PrivateFiles::prepareFile(path))
        return Outcome::refused;
    sqlite3 *database = nullptr;
    const int code = sqlite3_open_v2(QFile::encodeName(path).constData(), &database,
                                     SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOMUTEX, nullptr);
    database_.reset(database); // SQLite returns a handle to release after a failure, too.
    Outcome outcome = outcomeOf(code);
    if (outcome == Outcome::done) {
        sqlite3_busy_timeout(database, busyTimeoutMs);
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

Outcome SqliteFile::checkSchema()
{
    qint64 application = 0;
    qint64 version = 0;
    qint64 tables = 0;
    Outcome outcome = readNumber(database_.get(), "PRAGMA application_id", application);
    if (outcome == Outcome::done)
        outcome = readNumber(database_.get(), "PRAGMA user_version", version);
    if (outcome == Outcome::done)
        outcome = readNumber(database_.get(), "SELECT count(*) FROM sqlite_master", tables);
    if (outcome != Outcome::done)
        return outcome;
    const bool isEmpty = application == 0 && version == 0 && tables == 0;
    if (!isEmpty && application != applicationId)
        return Outcome::damaged;
    if (version > schemaVersion)
        return Outcome::newer;
    return createSchema();
}

// Runs for an existing file, too: this write shows early whether writing is possible.
Outcome SqliteFile::createSchema()
{
    for (const char *step :
         {"PRAGMA journal_mode=WAL", "PRAGMA synchronous=NORMAL", "PRAGMA secure_delete=ON", schema}) {
        const Outcome outcome = run(database_.get(), step);
        if (outcome != Outcome::done)
            return outcome;
    }
    return Outcome::done;
}

Outcome SqliteFile::load(DefaultsValues &values)
{
    Statement rows(database_.get(), "SELECT key, type, value FROM defaults");
    int code = rows.step();
    for (; code == SQLITE_ROW; code = rows.step()) {
        if (auto value = decode(rows.blob(1), rows, 2))
            values.insert(QString::fromUtf8(rows.blob(0)), *std::move(value));
    }
    return outcomeOf(code);
}

Outcome SqliteFile::write(const DefaultsChanges &changes)
{
    Outcome outcome = run(database_.get(), "BEGIN IMMEDIATE");
    if (outcome != Outcome::done)
        return outcome;
    bool removes = false;
    for (auto change = changes.cbegin(); change != changes.cend() && outcome == Outcome::done; ++change) {
        outcome = writeOne(change.key(), change.value());
        removes = removes || !change.value();
    }
    if (outcome == Outcome::done)
        outcome = run(database_.get(), "COMMIT");
    if (outcome == Outcome::damaged)
        keepLogOnClose(true);
    if (outcome != Outcome::done)
        (void)run(database_.get(), "ROLLBACK");
    else if (removes) // Removed values must not stay readable in the write-ahead log.
        (void)run(database_.get(), "PRAGMA wal_checkpoint(TRUNCATE)");
    return outcome;
}

Outcome SqliteFile::writeOne(const QString &key, const std::optional<DefaultsValue> &value)
{
    if (!value) {
        Statement removal(database_.get(), "DELETE FROM defaults WHERE key=?1");
        removal.bind(1, key);
        return outcomeOf(removal.step());
    }
    Statement row(database_.get(),
                  "INSERT INTO defaults(key, type, value) VALUES(?1, ?2, ?3)"
                  " ON CONFLICT(key) DO UPDATE SET type=excluded.type, value=excluded.value");
    row.bind(1, key);
    row.bind(2, QString::fromLatin1(typeName(*value)));
    std::visit([&row](const auto &content) { row.bind(3, content); }, *value);
    return outcomeOf(row.step());
}

void SqliteFile::close()
{
    database_.reset();
}

void SqliteFile::closeWithoutCheckpoint()
{
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
    const QTemporaryDir folder; // 0700.
    if (!folder.isValid() || !QFile::exists(path))
        return;
    const QString copy = folder.filePath(u"copy"_s);
    QFile::copy(path + u"-wal"_s, copy + u"-wal"_s);
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
        return std::any_of(suffixes.begin(), suffixes.end(), [&name](const char *suffix) {
            return QFile::exists(name + QLatin1StringView(suffix));
        });
    };
    int number = 1;
    while (isTaken(nameFor(number)))
        ++number;
    const QString name = nameFor(number);
    for (const char *suffix : suffixes)
        QFile::rename(path + QLatin1StringView(suffix), name + QLatin1StringView(suffix));
    return QFile::exists(path) ? QString() : name;
}
