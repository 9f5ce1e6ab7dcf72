#include "FolderHandle.h"

#include <QFile>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <memory>
#include <utility>

namespace {

constexpr int folderFlags = O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;

QByteArray lastName(const QByteArray &path)
{
    return path.mid(path.lastIndexOf('/') + 1);
}

struct CloseFolder {
    void operator()(DIR *folder) const { closedir(folder); }
};

} // namespace

Descriptor &Descriptor::operator=(Descriptor &&other) noexcept
{
    std::swap(number_, other.number_);
    return *this;
}

Descriptor::~Descriptor()
{
    if (number_ >= 0)
        ::close(number_);
}

int Descriptor::release()
{
    return std::exchange(number_, -1);
}

FolderHandle FolderHandle::open(const QString &path)
{
    return FolderHandle(::open(QFile::encodeName(path).constData(), folderFlags));
}

bool FolderHandle::isPrivate() const
{
    struct stat status = {};
    return fstat(descriptor(), &status) == 0 && status.st_uid == geteuid() &&
           (status.st_mode & 07777) == S_IRWXU;
}

FolderHandle FolderHandle::child(const QByteArray &name) const
{
    return FolderHandle(openat(descriptor(), name.constData(), folderFlags));
}

FolderHandle FolderHandle::folder(const QByteArray &path) const
{
    FolderHandle result = child(".");
    for (const QByteArray &name : path.split('/')) {
        if (result.isOpen())
            result = result.child(name);
    }
    return result;
}

FolderHandle FolderHandle::parentOf(const QByteArray &path) const
{
    const qsizetype slash = path.lastIndexOf('/');
    return slash < 0 ? child(".") : folder(path.first(slash));
}

std::vector<FolderHandle::Entry> FolderHandle::entries() const
{
    std::vector<Entry> result;
    const int copy = openat(descriptor(), ".", folderFlags); // Has a position of its own.
    const std::unique_ptr<DIR, CloseFolder> stream(copy < 0 ? nullptr : fdopendir(copy));
    while (const dirent *entry = stream ? readdir(stream.get()) : nullptr) {
        const QByteArray name(static_cast<const char *>(entry->d_name));
        struct stat status = {};
        if (name == "." || name == ".." ||
            fstatat(descriptor(), name.constData(), &status, AT_SYMLINK_NOFOLLOW) != 0)
            continue;
        result.push_back({name, S_ISDIR(status.st_mode)});
    }
    std::sort(result.begin(), result.end(), [](const Entry &a, const Entry &b) { return a.name < b.name; });
    return result;
}

QByteArray FolderHandle::read(const QByteArray &path, qsizetype limit) const
{
    const FolderHandle parent = parentOf(path);
    // Without O_NONBLOCK opening a FIFO would wait.
    const Descriptor file(openat(parent.descriptor(), lastName(path).constData(),
                                 O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
    struct stat status = {};
    if (!file.isOpen() || fstat(file.number(), &status) != 0 || !S_ISREG(status.st_mode) ||
        status.st_size > limit)
        return {};
    QByteArray content(status.st_size, Qt::Uninitialized);
    const ssize_t size = ::read(file.number(), content.data(), static_cast<size_t>(content.size()));
    return size == content.size() ? content : QByteArray();
}

bool FolderHandle::isProgram(const QByteArray &path) const
{
    const FolderHandle parent = parentOf(path);
    struct stat status = {};
    return fstatat(parent.descriptor(), lastName(path).constData(), &status, AT_SYMLINK_NOFOLLOW) == 0 &&
           S_ISREG(status.st_mode) && (status.st_mode & S_IXUSR) != 0;
}

bool FolderHandle::makeFolder(const QByteArray &path, mode_t mode) const
{
    const FolderHandle parent = parentOf(path);
    return parent.isOpen() && mkdirat(parent.descriptor(), lastName(path).constData(), mode) == 0;
}

Descriptor FolderHandle::makeFile(const QByteArray &path, mode_t mode) const
{
    const FolderHandle parent = parentOf(path);
    if (!parent.isOpen())
        return Descriptor();
    return Descriptor(openat(parent.descriptor(), lastName(path).constData(),
                             O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, mode));
}

bool FolderHandle::removeFile(const QByteArray &path) const
{
    const FolderHandle parent = parentOf(path);
    return parent.isOpen() && unlinkat(parent.descriptor(), lastName(path).constData(), 0) == 0;
}

bool FolderHandle::removeTree(const QByteArray &name) const
{
    if (const FolderHandle folder = child(name); folder.isOpen()) {
        for (const Entry &entry : folder.entries())
            folder.removeTree(entry.name);
        return unlinkat(descriptor(), name.constData(), AT_REMOVEDIR) == 0;
    }
    return unlinkat(descriptor(), name.constData(), 0) == 0;
}

bool FolderHandle::removeEmptyFolders(const QByteArray &name) const
{
    if (const FolderHandle folder = child(name); folder.isOpen()) {
        for (const Entry &entry : folder.entries()) {
            if (entry.isFolder)
                folder.removeEmptyFolders(entry.name);
        }
    }
    return unlinkat(descriptor(), name.constData(), AT_REMOVEDIR) == 0;
}

bool FolderHandle::sync() const
{
    return isOpen() && fsync(descriptor()) == 0;
}
