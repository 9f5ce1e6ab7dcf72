#pragma once

#include <VelmoraPlatform/DefaultsStore.h>

#include <QDir>
#include <QFile>
#include <QList>
#include <QStringList>

#include <sys/fsuid.h>
#include <unistd.h>

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
