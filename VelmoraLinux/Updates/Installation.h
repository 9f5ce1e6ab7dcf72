#pragma once

#include <QProcessEnvironment>
#include <QString>

// How this copy of the program was installed, and who may replace it.
struct Installation {
    enum class Kind {
        appImage, // A file that belongs to the user: `target`.
        folder,   // A folder that belongs to the user and contains only our files: `target`.
        managed,  // Updated by something else: `manager`.
    };

    Kind kind = Kind::managed;
    QString target;   // What an update replaces, absolute; empty when managed.
    QString launcher; // The program to start, before and after an update.
    QString manager;  // "Flatpak", "apt (dpkg)", or the folder that cannot be replaced.

    // `program` is the running executable, `environment` what it was started with.
    [[nodiscard]] static Installation detect(const QString &program, const QProcessEnvironment &environment);
    // MIME type of the archives that can replace it; empty when managed.
    [[nodiscard]] QString archiveType() const;
};

// The files of an installed folder, as listed in its manifest (share/velmora/manifest). An update moves and
// removes only these: a folder that contains any other file is not replaced.
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

// The AppImage this process was started from; empty when there is none. The variable APPIMAGE alone is no
// proof: a program started from a terminal that is itself an AppImage inherits the terminal's variable.
[[nodiscard]] QString runningAppImage(const QString &program, const QProcessEnvironment &environment);
