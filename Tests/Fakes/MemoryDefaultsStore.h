#pragma once

#include <VelmoraPlatform/DefaultsStore.h>

#include <QHash>
#include <QList>
#include <QStringList>

#include <variant>

// A store in memory that records writes and can be set to fail.
class MemoryDefaultsStore final : public DefaultsStore {
public:
    using Value = std::variant<bool, qint64, QString, QByteArray>;

    [[nodiscard]] std::optional<bool> boolean(QStringView key) const override;
    [[nodiscard]] std::optional<qint64> integer(QStringView key) const override;
    [[nodiscard]] std::optional<QString> string(QStringView key) const override;
    [[nodiscard]] std::optional<QByteArray> data(QStringView key) const override;
    void setBoolean(QStringView key, bool value) override;
    void setInteger(QStringView key, qint64 value) override;
    void setString(QStringView key, const QString &value) override;
    void setPieces(QStringView key, const QByteArrayList &value) override;
    void remove(QStringView key) override;
    void setProblemHandler(ProblemHandler handler) override;

    void setRecoveryHandler(std::function<void()> handler) override { recovered_ = std::move(handler); }

    // What a test prepares or looks at; none of these counts as a write.
    void place(const QString &key, const Value &value) { values_[key] = value; }

    [[nodiscard]] QStringList keys() const; // Sorted.
    // Keys in the order of their writes; a removal is the key with a leading minus.
    QStringList writes;
    // A problem reported now, or as soon as a handler is set.
    void fail(Problem problem);

    void recover() { recovered_(); }

    bool failsWrites = false; // Each write then reports `notWritable`; the value is kept all the same.
    // For each group that has ended, what was written in it.
    QList<QStringList> groups;
    // The pieces that were given last.
    QByteArrayList pieces;

protected:
    void beginGroup() override { groupBegin_ = writes.size(); }

    void endGroup() override { groups.append(writes.sliced(groupBegin_)); }

private:
    template<typename Type>
    [[nodiscard]] std::optional<Type> read(QStringView key) const;
    void write(QStringView key, const Value &value);

    QHash<QString, Value> values_;
    qsizetype groupBegin_ = 0;
    ProblemHandler problemHandler_;
    std::optional<Problem> unheard_;
    std::function<void()> recovered_;
};
