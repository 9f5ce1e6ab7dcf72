#pragma once

#include <QProcessEnvironment>
#include <QString>

// How this copy of the program was installed, and so who may replace it.
struct Installation {
    enum class Kind {
        appImage, // One file of the user's: `target`.
        folder,   // A folder of the user's that holds nothing but our files: `target`.
        managed,  // Somebody else's affair: `manager`.
    };

    Kind kind = Kind::managed;
    QString target;   // What an update replaces, absolute; empty when managed.
    QString launcher; // What starts the installed version, before and after an update.
    QString manager;  // "Flatpak", "apt (dpkg)", or the folder that cannot be replaced.

    // `program` is the running executable, `environment` what it was started with.
    [[nodiscard]] static Installation detect(const QString &program, const QProcessEnvironment &environment);
    // MIME type of the archives that can replace it; empty when managed.
    [[nodiscard]] QString archiveType() const;
};

// The files of an installed folder, as its list share/velmora/manifest has them. An update moves and removes
// these and no others: a folder that holds anything else is not ours to replace.
class InstalledFiles {
public:
    explicit InstalledFiles(QString root)
        : root_(std::move(root))
    {
    }

    // Whether there is a list, every file on it lies there, and nothing else does.
    [[nodiscard]] bool areComplete() const;
    // Removes what is on the list and the folders that become empty. False when something else remains.
    bool remove() const;

private:
    [[nodiscard]] QStringList listed() const;

    QString root_;
};

// The AppImage this process was really started from; empty elsewhere. A terminal that is itself an AppImage
// hands its own APPIMAGE on to whatever is started in it, so the variable alone proves nothing.
[[nodiscard]] QString runningAppImage(const QString &program, const QProcessEnvironment &environment);
