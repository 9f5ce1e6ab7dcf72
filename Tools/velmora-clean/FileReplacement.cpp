#include "FileReplacement.h"

#include "TemporaryName.h"

#include <fcntl.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdio>
#include <system_error>
#include <vector>

namespace {

std::string reason(int error)
{
    return std::generic_category().message(error);
}

bool isSameTime(const timespec &left, const timespec &right)
{
    return left.tv_sec == right.tv_sec && left.tv_nsec == right.tv_nsec;
}

std::string folderOf(const std::string &path)
{
    const std::size_t slash = path.rfind('/');
    if (slash == std::string::npos)
        return ".";
    return path.substr(0, slash == 0 ? 1 : slash);
}

} // namespace

std::string FileReplacement::obstacle(const std::string &path)
{
    struct stat status = {};
    if (::lstat(path.c_str(), &status) != 0)
        return reason(errno);
    if (S_ISLNK(status.st_mode))
        return "is a symbolic link; name the file that it leads to";
    if (!S_ISREG(status.st_mode))
        return "is not a regular file";
    if (status.st_nlink > 1)
        return "has several names (hard links), of which only one would be cleaned";
    return ::faccessat(AT_FDCWD, path.c_str(), W_OK, AT_EACCESS) == 0 ? "" : reason(errno);
}

FileReplacement::FileReplacement(const InputFile &file, std::string path)
    : file_(file)
    , path_(std::move(path))
    , folder_(folderOf(path_))
{
    // Between the look at the path and its opening it may have changed.
    if (::fstat(file_.descriptor(), &status_) != 0 || !S_ISREG(status_.st_mode) || status_.st_nlink > 1)
        problem_ = "changed while it was being opened";
}

FileReplacement::~FileReplacement()
{
    if (descriptor_ < 0)
        return;
    ::close(descriptor_);
    if (*temporaryName::get() != '\0')
        ::unlink(temporaryName::get());
    temporaryName::forget();
}

bool FileReplacement::append(std::string_view original, std::string_view text, bool changed)
{
    if (!problem_.empty())
        return false;
    if (descriptor_ < 0 && !changed) {
        unchanged_ += original.size();
        return true;
    }
    return (descriptor_ >= 0 || begin()) && write(text);
}

bool FileReplacement::begin()
{
    descriptor_ = temporaryName::create(folder_);
    if (descriptor_ < 0)
        return fail("no temporary file can be made beside it");
    return copyUnchanged();
}

bool FileReplacement::copyUnchanged()
{
    std::vector<char> buffer(std::size_t{256} * 1024);
    for (std::size_t done = 0; done < unchanged_;) {
        const std::size_t wanted = std::min(buffer.size(), unchanged_ - done);
        const ssize_t count = ::pread(file_.descriptor(), buffer.data(), wanted, static_cast<off_t>(done));
        if (count < 0 && errno == EINTR)
            continue;
        if (count <= 0) {
            errno = count == 0 ? ESTALE : errno; // The file became shorter.
            return fail("cannot be read");
        }
        if (!write({buffer.data(), static_cast<std::size_t>(count)}))
            return false;
        done += static_cast<std::size_t>(count);
    }
    return true;
}

bool FileReplacement::write(std::string_view text)
{
    while (!text.empty()) {
        const ssize_t count = ::write(descriptor_, text.data(), text.size());
        if (count >= 0)
            text.remove_prefix(static_cast<std::size_t>(count));
        else if (errno != EINTR)
            return fail("cannot write");
    }
    return true;
}

bool FileReplacement::commit()
{
    if (!problem_.empty())
        return false;
    if (descriptor_ < 0)
        return true;
    keepAttributes();
    keepRights();
    if (::fsync(descriptor_) != 0)
        return fail("cannot write");
    if (!isUntouched())
        return false;
    if (::rename(temporaryName::get(), path_.c_str()) != 0)
        return fail("cannot be replaced");
    temporaryName::forget();
    // The name is in the folder, which reaches the disk by itself.
    const int folder = ::open(folder_.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (folder >= 0) {
        static_cast<void>(::fsync(folder));
        ::close(folder);
    }
    return true;
}

// Access lists are attributes, too. What the system does not grant is left out.
void FileReplacement::keepAttributes() const
{
    const ssize_t size = ::flistxattr(file_.descriptor(), nullptr, 0);
    if (size <= 0)
        return;
    std::vector<char> names(static_cast<std::size_t>(size));
    const ssize_t length = ::flistxattr(file_.descriptor(), names.data(), names.size());
    for (ssize_t at = 0; at < length;) {
        const std::string name(names.data() + at);
        at += static_cast<ssize_t>(name.size()) + 1;
        const ssize_t valueSize = ::fgetxattr(file_.descriptor(), name.c_str(), nullptr, 0);
        if (valueSize < 0)
            continue;
        std::vector<char> value(static_cast<std::size_t>(valueSize));
        const ssize_t valueLength = ::fgetxattr(file_.descriptor(), name.c_str(), value.data(), value.size());
        if (valueLength >= 0)
            static_cast<void>(::fsetxattr(descriptor_, name.c_str(), value.data(),
                                          static_cast<std::size_t>(valueLength), 0));
    }
}

void FileReplacement::keepRights() const
{
    mode_t rights = status_.st_mode & 07777U;
    constexpr auto unaltered = static_cast<uid_t>(-1);
    if (::fchown(descriptor_, status_.st_uid, status_.st_gid) != 0) {
        // A program that acts for its owner is not to act for another one.
        rights &= ~static_cast<mode_t>(S_ISUID | S_ISGID);
        static_cast<void>(::fchown(descriptor_, unaltered, status_.st_gid) == 0);
    }
    static_cast<void>(::fchmod(descriptor_, rights));
}

// What somebody else wrote meanwhile would be lost.
bool FileReplacement::isUntouched()
{
    struct stat now = {};
    if (::lstat(path_.c_str(), &now) == 0 && now.st_dev == status_.st_dev && now.st_ino == status_.st_ino &&
        now.st_size == status_.st_size && isSameTime(now.st_mtim, status_.st_mtim))
        return true;
    problem_ = "changed while it was being cleaned, and was left as it is";
    return false;
}

bool FileReplacement::fail(std::string_view deed)
{
    problem_ = std::string(deed) + ": " + reason(errno);
    return false;
}
