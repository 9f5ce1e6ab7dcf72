#pragma once

#include <QByteArray>
#include <QString>
#include <QStringView>

#include <functional>
#include <optional>

// The user's settings and counters: one typed value per key.
//
// Reading a key that is missing or holds another type gives nothing. A value that was set is what the next
// read gives, even when it could not be kept on disk; that failure is reported through `setProblemHandler`.
class DefaultsStore {
public:
    enum class Problem {
        notWritable, // The file is read-only, locked, or the disk is full: values are kept in memory only.
        setAside,    // The stored file was damaged; it was renamed and an empty store begun.
    };
    using ProblemHandler = std::function<void(Problem)>;

    virtual ~DefaultsStore() = default;

    [[nodiscard]] virtual std::optional<bool> boolean(QStringView key) const = 0;
    [[nodiscard]] virtual std::optional<qint64> integer(QStringView key) const = 0;
    [[nodiscard]] virtual std::optional<QString> string(QStringView key) const = 0;
    [[nodiscard]] virtual std::optional<QByteArray> data(QStringView key) const = 0;

    // When the call returns, the value survives the end of this process, by SIGKILL too.
    virtual void setBoolean(QStringView key, bool value) = 0;
    virtual void setInteger(QStringView key, qint64 value) = 0;
    virtual void setString(QStringView key, const QString &value) = 0;
    virtual void setData(QStringView key, const QByteArray &value) = 0;
    // Removing a missing key is no error.
    virtual void remove(QStringView key) = 0;

    // Called on the main thread for every problem; one that arose while the store was opened is reported at once.
    virtual void setProblemHandler(ProblemHandler handler) = 0;
    // `handler` runs on the main thread when everything is on disk again after `notWritable`.
    virtual void setRecoveryHandler(std::function<void()> handler) = 0;
};
