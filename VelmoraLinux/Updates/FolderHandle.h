#pragma once

#include <QByteArray>
#include <QString>

#include <vector>

// A descriptor that is closed with its object.
class Descriptor {
public:
    explicit Descriptor(int number = -1)
        : number_(number)
    {
    }

    Descriptor(Descriptor &&other) noexcept
        : number_(other.release())
    {
    }

    Descriptor &operator=(Descriptor &&other) noexcept;
    ~Descriptor();
    Descriptor(const Descriptor &) = delete;
    Descriptor &operator=(const Descriptor &) = delete;

    [[nodiscard]] bool isOpen() const { return number_ >= 0; }

    [[nodiscard]] int number() const { return number_; }

    [[nodiscard]] int release();

private:
    int number_;
};

// An open folder. All members work relative to its descriptor and follow no symbolic link, so it makes no
// difference when another user renames or replaces a folder on the way to it.
//
// Names are as the file system has them; a path is names with '/' between them. Members that return false or
// an unopened object leave the reason in errno.
class FolderHandle {
public:
    struct Entry {
        QByteArray name;
        bool isFolder = false; // False for a link to a folder.
    };

    FolderHandle() = default; // Not open.
    // Only the last component of `path` must not be a link.
    [[nodiscard]] static FolderHandle open(const QString &path);

    [[nodiscard]] bool isOpen() const { return descriptor_.isOpen(); }

    [[nodiscard]] int descriptor() const { return descriptor_.number(); }

    // Whether the folder belongs to this user, with mode 0700.
    [[nodiscard]] bool isPrivate() const;
    [[nodiscard]] FolderHandle folder(const QByteArray &path) const;
    // Everything but "." and "..", in the order of names.
    [[nodiscard]] std::vector<Entry> entries() const;
    // The content of a regular file of at most `limit` bytes; empty on failure.
    [[nodiscard]] QByteArray read(const QByteArray &path, qsizetype limit) const;
    [[nodiscard]] bool isProgram(const QByteArray &path) const;

    [[nodiscard]] bool makeFolder(const QByteArray &path, mode_t mode) const;
    // A new file, opened for writing.
    [[nodiscard]] Descriptor makeFile(const QByteArray &path, mode_t mode) const;
    // Removes a file or a link.
    bool removeFile(const QByteArray &path) const;
    // Removes a file, or a folder with everything in it.
    bool removeTree(const QByteArray &name) const;
    // Removes the folder `name` and the folders in it, as far as they contain no files.
    bool removeEmptyFolders(const QByteArray &name) const;
    [[nodiscard]] bool sync() const;

private:
    explicit FolderHandle(int descriptor)
        : descriptor_(descriptor)
    {
    }

    [[nodiscard]] FolderHandle child(const QByteArray &name) const;
    [[nodiscard]] FolderHandle parentOf(const QByteArray &path) const;

    Descriptor descriptor_;
};
