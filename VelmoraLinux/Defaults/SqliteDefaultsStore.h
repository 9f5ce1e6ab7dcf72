#pragma once

#include "SqliteFile.h"

#include <VelmoraPlatform/DefaultsStore.h>

#include <QList>

// The defaults in an SQLite file that only the user can read.
//
// All values are also kept in memory: reading never touches the disk, and a value that could not be written
// is kept and written together with the next one that is set, or at the end of the program.
class SqliteDefaultsStore final : public DefaultsStore {
public:
    // `folder` is created when missing; the file in it is "defaults.sqlite".
    explicit SqliteDefaultsStore(const QString &folder);
    ~SqliteDefaultsStore() override;
    Q_DISABLE_COPY_MOVE(SqliteDefaultsStore)

    [[nodiscard]] std::optional<bool> boolean(QStringView key) const override;
    [[nodiscard]] std::optional<qint64> integer(QStringView key) const override;
    [[nodiscard]] std::optional<QString> string(QStringView key) const override;
    [[nodiscard]] std::optional<QByteArray> data(QStringView key) const override;
    void setBoolean(QStringView key, bool value) override;
    void setInteger(QStringView key, qint64 value) override;
    void setString(QStringView key, const QString &value) override;
    void setPieces(QStringView key, const QByteArrayList &pieces) override;
    void remove(QStringView key) override;
    void setProblemHandler(ProblemHandler handler) override;

    void setRecoveryHandler(std::function<void()> handler) override { recovered_ = std::move(handler); }

    // Returns when text that was removed has left all files, or cannot leave them now.
    void finishTidying() { file_.finishTidying(); }

protected:
    void beginGroup() override { ++groups_; }

    void endGroup() override;

private:
    template<typename Value>
    [[nodiscard]] std::optional<Value> read(QStringView key) const;
    void set(QStringView key, const DefaultsValue &value);
    void change(const QString &key, const std::optional<DefaultsValue> &value);
    void writeChanges();
    SqliteFile::Outcome tryToWrite();
    SqliteFile::Outcome openFile();
    void setAside();
    void markAllUnwritten();
    void report(Problem problem);

    QString folder_;
    QString path_;
    SqliteFile file_;
    DefaultsValues values_;
    DefaultsChanges unwritten_;
    int groups_ = 0;
    bool removesText_ = false; // What is unwritten replaces text that must not stay readable.
    bool isNewer_ = false;     // The file is from a later version: never written to.
    bool isWritable_ = true;   // Whether the last write succeeded; each failure is reported once.
    ProblemHandler handler_;
    std::function<void()> recovered_;
    QList<Problem> unreported_;
};
