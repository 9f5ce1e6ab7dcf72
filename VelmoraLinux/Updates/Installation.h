#pragma once

#include "FolderHandle.h"

#include <VelmoraPlatform/UpdateUserDriver.h>

#include <QProcessEnvironment>
#include <QString>
#include <QStringList>

// How this copy of the program was installed, and who may replace it.
struct Installation {
    enum class Kind {
        appImage, // A file that belongs to the user: `target`.
        folder,   // A folder that belongs to the user and contains only our files: `target`.
        managed,  // Not updated by this program: see `problem`.
    };

    Kind kind = Kind::managed;
    QString target;   // What an update replaces, absolute; empty when managed.
    QString launcher; // The program to start, before and after an update.
    QString manager;  // When managed: "Flatpak", "apt (dpkg)", or the folder that cannot be replaced.
    // When managed for another reason than a package manager: sharedFolder or foreignFile, and where.
    UpdateOutcome problem = {};
    QString place = {};

    // `program` is the running executable, `environment` what it was started with.
    [[nodiscard]] static Installation detect(const QString &program, const QProcessEnvironment &environment);
    // MIME types of the archives that can replace it; none when managed.
    [[nodiscard]] QStringList archiveTypes() const;

private:
    [[nodiscard]] static Installation detectImage(const QString &image);
};

// The files of an installed folder, as listed in its manifest (share/velmora/manifest). An update moves and
// removes only these: a folder that contains any other file is not replaced.
class InstalledFiles {
public:
    explicit InstalledFiles(const FolderHandle &root)
        : root_(root)
    {
    }

    // Whether there is a manifest.
    [[nodiscard]] bool isListed() const;
    // Whether there is a manifest, every file on it exists, and no other file does.
    [[nodiscard]] bool areComplete() const;
    // The path, below the root, of the first file that is not on the manifest; empty when there is none.
    [[nodiscard]] QString foreignFile() const;
    // Removes the files of the manifest, but not the folders.
    void remove() const;

private:
    [[nodiscard]] QByteArrayList listed() const;

    const FolderHandle &root_;
};

// The AppImage this process was started from; empty when there is none. The variable APPIMAGE alone is no
// proof: a program started from a terminal that is itself an AppImage inherits the terminal's variable.
[[nodiscard]] QString runningAppImage(const QString &program, const QProcessEnvironment &environment);
