#pragma once

#include <QByteArray>
#include <QByteArrayList>
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
    // The value is the pieces one behind the other. A store may keep the pieces that the value had before, so
    // that a long value of which a short piece changes costs what the piece costs.
    virtual void setPieces(QStringView key, const QByteArrayList &pieces) = 0;

    void setData(QStringView key, const QByteArray &value) { setPieces(key, {value}); }

    // Removing a missing key is no error.
    virtual void remove(QStringView key) = 0;

    // Called on the main thread for every problem; one that arose while the store was opened is reported at once.
    virtual void setProblemHandler(ProblemHandler handler) = 0;
    // `handler` runs on the main thread when everything is on disk again after `notWritable`.
    virtual void setRecoveryHandler(std::function<void()> handler) = 0;

    // What is set while a group exists is written together when it ends: all of it survives, or nothing.
    class Group {
    public:
        explicit Group(DefaultsStore &store)
            : store_(store)
        {
            store_.beginGroup();
        }

        ~Group() { store_.endGroup(); }

        Q_DISABLE_COPY_MOVE(Group)

    private:
        DefaultsStore &store_;
    };

protected:
    virtual void beginGroup() = 0;
    virtual void endGroup() = 0;
};
