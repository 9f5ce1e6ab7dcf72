#include "RecordedDisk.h"

#include <QFile>
#include <QFileInfo>

#include <sqlite3.h>

#include <algorithm>
#include <utility>

namespace {

using Step = RecordedDisk::Step;

constexpr qsizetype sector = 512; // What a disk writes as a whole.

// The real file stands behind it in memory.
struct RecordedFile {
    sqlite3_file base;
    RecordedDisk *disk; // Null when the file is not recorded.
    QString *name;
    sqlite3_file *real;
};

RecordedFile &recorded(sqlite3_file *file)
{
    return *reinterpret_cast<RecordedFile *>(file);
}

// Calls the real file's method.
template<auto method, typename... Arguments>
int pass(sqlite3_file *file, Arguments... arguments)
{
    sqlite3_file *real = recorded(file).real;
    return (real->pMethods->*method)(real, arguments...);
}

int closeFile(sqlite3_file *file)
{
    const int code = pass<&sqlite3_io_methods::xClose>(file);
    delete std::exchange(recorded(file).name, nullptr);
    return code;
}

int writeFile(sqlite3_file *file, const void *bytes, int size, sqlite3_int64 offset)
{
    const auto &self = recorded(file);
    if (self.disk != nullptr)
        self.disk->record({.kind = Step::writes,
                           .file = *self.name,
                           .offset = offset,
                           .bytes = QByteArray(static_cast<const char *>(bytes), size)});
    return pass<&sqlite3_io_methods::xWrite>(file, bytes, size, offset);
}

int truncateFile(sqlite3_file *file, sqlite3_int64 size)
{
    const auto &self = recorded(file);
    if (self.disk != nullptr)
        self.disk->record({.kind = Step::truncates, .file = *self.name, .offset = size, .bytes = {}});
    return pass<&sqlite3_io_methods::xTruncate>(file, size);
}

int syncFile(sqlite3_file *file, int)
{
    const auto &self = recorded(file);
    if (self.disk != nullptr)
        self.disk->record({.kind = Step::syncs, .file = *self.name, .bytes = {}});
    return SQLITE_OK;
}

void fenceShared(sqlite3_file *file)
{
    sqlite3_file *real = recorded(file).real;
    real->pMethods->xShmBarrier(real);
}

const sqlite3_io_methods methods = {
    .iVersion = 2, // Without mapped files, whose writes nobody could see.
    .xClose = closeFile,
    .xRead = pass<&sqlite3_io_methods::xRead, void *, int, sqlite3_int64>,
    .xWrite = writeFile,
    .xTruncate = truncateFile,
    .xSync = syncFile,
    .xFileSize = pass<&sqlite3_io_methods::xFileSize, sqlite3_int64 *>,
    .xLock = pass<&sqlite3_io_methods::xLock, int>,
    .xUnlock = pass<&sqlite3_io_methods::xUnlock, int>,
    .xCheckReservedLock = pass<&sqlite3_io_methods::xCheckReservedLock, int *>,
    .xFileControl = pass<&sqlite3_io_methods::xFileControl, int, void *>,
    .xSectorSize = pass<&sqlite3_io_methods::xSectorSize>,
    .xDeviceCharacteristics = pass<&sqlite3_io_methods::xDeviceCharacteristics>,
    .xShmMap = pass<&sqlite3_io_methods::xShmMap, int, int, int, volatile void **>,
    .xShmLock = pass<&sqlite3_io_methods::xShmLock, int, int, int>,
    .xShmBarrier = fenceShared,
    .xShmUnmap = pass<&sqlite3_io_methods::xShmUnmap, int>,
    .xFetch = nullptr,
    .xUnfetch = nullptr,
};

constexpr auto ownName = "velmora-recorded-disk";

} // namespace

struct RecordedDisk::FileSystem {
    sqlite3_vfs vfs;
    sqlite3_vfs *real;
    RecordedDisk *disk;

    static FileSystem &of(sqlite3_vfs *vfs) { return *static_cast<FileSystem *>(vfs->pAppData); }

    static int open(sqlite3_vfs *vfs, const char *path, sqlite3_file *file, int flags, int *given)
    {
        auto &self = of(vfs);
        const QString name = path == nullptr ? QString() : QFile::decodeName(path);
        auto &opened = recorded(file);
        opened.real = reinterpret_cast<sqlite3_file *>(&opened + 1);
        const int code = self.real->xOpen(self.real, path, opened.real, flags, given);
        const bool isOpen = opened.real->pMethods != nullptr;
        opened.base.pMethods = isOpen ? &methods : nullptr;
        opened.disk = self.disk->isRecorded(name) ? self.disk : nullptr;
        opened.name = isOpen ? new QString(QFileInfo(name).fileName()) : nullptr;
        return code;
    }

    static int remove(sqlite3_vfs *vfs, const char *path, int isSynced)
    {
        auto &self = of(vfs);
        const QString name = QFile::decodeName(path);
        if (self.disk->isRecorded(name))
            self.disk->record({.kind = Step::removes,
                               .file = QFileInfo(name).fileName(),
                               .bytes = {},
                               .isSynced = isSynced != 0});
        return self.real->xDelete(self.real, path, 0);
    }
};

RecordedDisk::RecordedDisk(QString folder)
    : folder_(std::move(folder))
    , fileSystem_(std::make_unique<FileSystem>())
{
    fileSystem_->real = sqlite3_vfs_find(nullptr);
    fileSystem_->disk = this;
    // The other functions work on names and clocks only, and are the real one's.
    sqlite3_vfs &vfs = fileSystem_->vfs;
    vfs = *fileSystem_->real;
    vfs.zName = ownName;
    vfs.pAppData = fileSystem_.get();
    vfs.pNext = nullptr;
    vfs.szOsFile = static_cast<int>(sizeof(RecordedFile)) + fileSystem_->real->szOsFile;
    vfs.xOpen = FileSystem::open;
    vfs.xDelete = FileSystem::remove;
    sqlite3_vfs_register(&vfs, 1);
}

RecordedDisk::~RecordedDisk()
{
    sqlite3_vfs_register(fileSystem_->real, 1);
    sqlite3_vfs_unregister(&fileSystem_->vfs);
}

qsizetype RecordedDisk::steps() const
{
    const std::lock_guard lock(mutex_);
    return steps_.size();
}

qsizetype RecordedDisk::syncCount() const
{
    const std::lock_guard lock(mutex_);
    return std::count_if(steps_.begin(), steps_.end(),
                         [](const Step &step) { return step.kind == Step::syncs; });
}

void RecordedDisk::record(Step step)
{
    const std::lock_guard lock(mutex_);
    steps_.append(std::move(step));
}

bool RecordedDisk::isRecorded(const QString &path) const
{
    return QFileInfo(path).path() == folder_;
}

namespace {

void apply(RecordedDisk::Files &files, const Step &step)
{
    if (step.kind == Step::removes) {
        files.remove(step.file);
    } else if (step.kind == Step::truncates) {
        files[step.file].resize(step.offset, '\0');
    } else if (step.kind == Step::writes) {
        QByteArray &file = files[step.file];
        if (file.size() < step.offset + step.bytes.size())
            file.resize(step.offset + step.bytes.size(), '\0');
        file.replace(step.offset, step.bytes.size(), step.bytes);
    }
}

// Each sector of the write by itself, about half of them.
void applyTorn(RecordedDisk::Files &files, const Step &step, std::mt19937 &random)
{
    if (step.kind != Step::writes) {
        if (random() % 2 == 0)
            apply(files, step);
        return;
    }
    for (qint64 begin = step.offset; begin < step.offset + step.bytes.size();) {
        const qint64 end = std::min((begin / sector + 1) * sector, step.offset + step.bytes.size());
        if (random() % 2 == 0)
            apply(files, {.kind = Step::writes,
                          .file = step.file,
                          .offset = begin,
                          .bytes = step.bytes.mid(begin - step.offset, end - begin)});
        begin = end;
    }
}

} // namespace

RecordedDisk::Files RecordedDisk::afterCut(qsizetype steps, Unsynced unsynced, std::mt19937 &random) const
{
    const std::lock_guard lock(mutex_);
    QMap<QString, qsizetype> lastSync;
    for (qsizetype i = 0; i < steps; ++i) {
        if (steps_[i].kind == Step::syncs || steps_[i].isSynced)
            lastSync[steps_[i].file] = i;
    }
    Files files;
    for (qsizetype i = 0; i < steps; ++i) {
        const Step &step = steps_[i];
        if (unsynced == Unsynced::kept || i <= lastSync.value(step.file, -1))
            apply(files, step);
        else if (unsynced == Unsynced::someKept)
            applyTorn(files, step, random);
    }
    return files;
}
