#pragma once

#include <VelmoraLinux/Defaults/SqliteDefaultsStore.h>

#include <QDir>
#include <QFile>
#include <QList>
#include <QStringList>
#include <QTemporaryDir>

#include <sys/fsuid.h>
#include <unistd.h>

#include <optional>

constexpr uid_t nobody = 65534;

// The problems that the store has reported so far.
inline QList<DefaultsStore::Problem> problemsOf(DefaultsStore &store)
{
    QList<DefaultsStore::Problem> problems;
    store.setProblemHandler([&problems](DefaultsStore::Problem problem) { problems.append(problem); });
    store.setProblemHandler({});
    return problems;
}

inline QByteArray contentsOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

inline QStringList filesThatContain(const QString &folder, const QByteArray &text)
{
    QStringList result = QDir(folder).entryList(QDir::Files);
    result.removeIf([&](const QString &name) { return !contentsOf(folder + u'/' + name).contains(text); });
    return result;
}

// A home for the store of one test function, which calls begin() first.
class TestHome {
public:
    void begin() { home_.emplace(); }

    [[nodiscard]] QString home() const { return home_->path(); }

    [[nodiscard]] QString folder() const { return home_->filePath(QStringLiteral("velmora")); }

    [[nodiscard]] QString path() const { return folder() + QStringLiteral("/defaults.sqlite"); }

    void store(qint64 number) const
    {
        SqliteDefaultsStore(folder()).setInteger(QStringLiteral("number"), number);
    }

    [[nodiscard]] std::optional<qint64> stored() const
    {
        return SqliteDefaultsStore(folder()).integer(QStringLiteral("number"));
    }

private:
    std::optional<QTemporaryDir> home_;
};

// The superuser may write everywhere; without its capabilities it is subject to permissions like other users.
class OrdinaryUser {
public:
    OrdinaryUser()
    {
        if (geteuid() == 0)
            setfsuid(nobody);
    }

    ~OrdinaryUser()
    {
        if (geteuid() == 0)
            setfsuid(0);
    }

    Q_DISABLE_COPY_MOVE(OrdinaryUser)
};
