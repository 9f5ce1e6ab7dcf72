#include "ArchiveUnpacker.h"

#include "DecompressedFile.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <optional>

namespace {

constexpr qsizetype blockSize = 512;
constexpr qsizetype maximumNameLength = 512;
constexpr qsizetype maximumDepth = 24;

using Block = std::array<char, blockSize>;

struct Entry {
    QByteArray name; // Without the archive's top folder; empty for that folder itself.
    qint64 size = 0;
    bool isFolder = false;
    bool isProgram = false;
};

// The text of a header field, up to its first NUL if it has one.
QByteArray field(const Block &header, qsizetype offset, qsizetype size)
{
    const char *begin = header.data() + offset;
    return {begin, std::find(begin, begin + size, '\0') - begin};
}

std::optional<qint64> octal(const Block &header, qsizetype offset, qsizetype size)
{
    bool isNumber = false;
    const qint64 value = field(header, offset, size).trimmed().toLongLong(&isNumber, 8);
    return isNumber && value >= 0 ? std::optional(value) : std::nullopt;
}

bool hasRightChecksum(const Block &header)
{
    constexpr qsizetype at = 148;
    constexpr qsizetype size = 8;
    qint64 sum = size * ' ';
    for (qsizetype i = 0; i < blockSize; ++i)
        sum += i >= at && i < at + size ? 0 : static_cast<unsigned char>(header[static_cast<size_t>(i)]);
    return octal(header, at, size) == sum;
}

bool isPlainName(const QByteArray &part)
{
    return !part.isEmpty() && part != "." && part != ".." &&
           std::none_of(part.begin(), part.end(), [](char c) {
               return static_cast<unsigned char>(c) < 0x20 || c == 0x7f || c == '\\';
           });
}

// Nothing unless the header is a regular file or a folder with an acceptable name. `top` is the name of the
// archive's single top folder, set by the first entry.
std::optional<Entry> parseEntry(const Block &header, QByteArray &top)
{
    const QByteArray prefix = field(header, 345, 155);
    QByteArray name = (prefix.isEmpty() ? QByteArray() : prefix + '/') + field(header, 0, 100);
    const char type = header[156];
    const auto size = octal(header, 124, 12);
    const auto mode = octal(header, 100, 8);
    const bool isFolder = type == '5';
    const bool isFile = type == '0' || type == '\0';
    if (!hasRightChecksum(header) || field(header, 257, 5) != "ustar" || !size || !mode ||
        isFolder == isFile || name.size() > maximumNameLength)
        return std::nullopt;
    if (isFolder && name.endsWith('/'))
        name.chop(1);
    QByteArrayList parts = name.split('/');
    if (parts.size() > maximumDepth || !std::all_of(parts.begin(), parts.end(), isPlainName))
        return std::nullopt;
    const QByteArray first = parts.takeFirst();
    if (top.isEmpty())
        top = first;
    if (first != top || (parts.isEmpty() && !isFolder) || (isFolder && *size != 0))
        return std::nullopt;
    return Entry{parts.join('/'), *size, isFolder, (*mode & 0111) != 0};
}

UpdateProblem problemOfErrno()
{
    return errno == ENOSPC || errno == EDQUOT || errno == EFBIG ? UpdateProblem::noSpace
                                                                : UpdateProblem::notReplaced;
}

// A full disk may accept a part of the bytes before it refuses the rest.
bool writeAll(int file, const char *bytes, size_t size)
{
    while (size > 0) {
        const ssize_t written = write(file, bytes, size);
        if (written <= 0)
            return false;
        bytes += written;
        size -= static_cast<size_t>(written);
    }
    return true;
}

// Copies the `size` bytes that follow in `archive`, and skips the padding behind them.
UpdateOutcome copyContent(DecompressedFile &archive, int file, qint64 size)
{
    std::array<char, 64 * blockSize> buffer{};
    while (size > 0) {
        const qint64 padded = (size + blockSize - 1) / blockSize * blockSize;
        const qint64 wanted = std::min<qint64>(padded, buffer.size());
        if (!archive.read(buffer.data(), wanted))
            return UpdateProblem::contents;
        const auto useful = static_cast<size_t>(std::min<qint64>(size, wanted));
        if (!writeAll(file, buffer.data(), useful))
            return problemOfErrno();
        size -= static_cast<qint64>(useful);
    }
    return {};
}

UpdateOutcome makeFolder(const FolderHandle &root, const QByteArray &path)
{
    constexpr mode_t mode = 0755;
    if (root.makeFolder(path, mode) || errno == EEXIST)
        return {};
    return errno == ENOTDIR || errno == ELOOP ? UpdateProblem::contents : problemOfErrno();
}

UpdateOutcome makeFolders(const FolderHandle &root, const QByteArray &name)
{
    for (qsizetype slash = name.indexOf('/'); slash >= 0; slash = name.indexOf('/', slash + 1)) {
        if (const auto problem = makeFolder(root, name.first(slash)))
            return problem;
    }
    return {};
}

UpdateOutcome writeEntry(DecompressedFile &archive, const FolderHandle &root, const Entry &entry)
{
    if (const auto problem = makeFolders(root, entry.name))
        return problem;
    if (entry.isFolder)
        return entry.name.isEmpty() ? UpdateOutcome() : makeFolder(root, entry.name);
    Descriptor file = root.makeFile(entry.name, entry.isProgram ? 0755 : 0644);
    if (!file.isOpen())
        return errno == EEXIST || errno == ENOTDIR || errno == EISDIR ? UpdateProblem::contents
                                                                      : problemOfErrno();
    UpdateOutcome problem = copyContent(archive, file.number(), entry.size);
    if (close(file.release()) != 0 && !problem)
        problem = problemOfErrno();
    return problem;
}

UpdateOutcome writeEntries(DecompressedFile &archive, const FolderHandle &root,
                           ArchiveUnpacker::Limits limits)
{
    QByteArray top;
    for (Block header{}; archive.read(header.data(), blockSize);) {
        if (std::all_of(header.begin(), header.end(), [](char c) { return c == '\0'; }))
            return top.isEmpty() ? UpdateOutcome(UpdateProblem::contents) : UpdateOutcome();
        const auto entry = parseEntry(header, top);
        if (!entry)
            return UpdateProblem::contents;
        limits.bytes -= entry->size;
        if (--limits.entries < 0 || limits.bytes < 0)
            return UpdateProblem::tooLarge;
        if (const auto problem = writeEntry(archive, root, *entry))
            return problem;
    }
    return UpdateProblem::contents; // The end mark is missing.
}

} // namespace

UpdateOutcome ArchiveUnpacker::unpack(VerifiedArchive &archive, const FolderHandle &folder) const
{
    const auto content = DecompressedFile::open(dup(archive.file().handle()));
    if (!content)
        return UpdateProblem::notReplaced;
    const UpdateOutcome problem = writeEntries(*content, folder, limits_);
    if (problem)
        return problem;
    return syncfs(folder.descriptor()) == 0 ? UpdateOutcome() : problemOfErrno();
}
