#include "DecompressedFile.h"

#include "FolderHandle.h"

#include <lzma.h>
#include <unistd.h>
#include <zlib.h>

#include <algorithm>
#include <array>

namespace {

// What our packages need is 17 MB; more than this is refused, since a signed file is not yet a sane one.
constexpr uint64_t maximumDecoderMemory = 128 << 20;
constexpr auto xzMagic = std::to_array<char>({'\xfd', '7', 'z', 'X', 'Z', '\0'});

class GzipFile final : public DecompressedFile {
public:
    explicit GzipFile(gzFile file)
        : file_(file)
    {
    }

    ~GzipFile() override { gzclose(file_); }

    GzipFile(const GzipFile &) = delete;
    GzipFile &operator=(const GzipFile &) = delete;

    bool read(char *bytes, qsizetype size) override
    {
        return gzread(file_, bytes, static_cast<unsigned>(size)) == size;
    }

private:
    gzFile file_;
};

class XzFile final : public DecompressedFile {
public:
    explicit XzFile(Descriptor file)
        : file_(std::move(file))
        , isSound_(lzma_stream_decoder(&stream_, maximumDecoderMemory, 0) == LZMA_OK)
    {
    }

    ~XzFile() override { lzma_end(&stream_); }

    XzFile(const XzFile &) = delete;
    XzFile &operator=(const XzFile &) = delete;

    bool read(char *bytes, qsizetype size) override
    {
        stream_.next_out = reinterpret_cast<uint8_t *>(bytes);
        stream_.avail_out = static_cast<size_t>(size);
        while (isSound_ && stream_.avail_out > 0) {
            if (stream_.avail_in == 0 && !refill())
                break;
            isSound_ = lzma_code(&stream_, LZMA_RUN) == LZMA_OK;
        }
        return stream_.avail_out == 0;
    }

private:
    bool refill()
    {
        const ssize_t count = ::read(file_.number(), input_.data(), input_.size());
        isSound_ = count > 0;
        stream_.next_in = input_.data();
        stream_.avail_in = isSound_ ? static_cast<size_t>(count) : 0;
        return isSound_;
    }

    Descriptor file_;
    lzma_stream stream_ = LZMA_STREAM_INIT;
    std::array<uint8_t, 65536> input_{};
    bool isSound_;
};

bool isXz(int descriptor)
{
    std::array<char, xzMagic.size()> begin{};
    return pread(descriptor, begin.data(), begin.size(), 0) == static_cast<ssize_t>(begin.size()) &&
           begin == xzMagic;
}

} // namespace

std::unique_ptr<DecompressedFile> DecompressedFile::open(int descriptor)
{
    Descriptor file(descriptor);
    if (!file.isOpen() || lseek(descriptor, 0, SEEK_SET) != 0)
        return nullptr;
    if (isXz(descriptor))
        return std::make_unique<XzFile>(std::move(file));
    gzFile gzip = gzdopen(descriptor, "rb");
    if (!gzip)
        return nullptr;
    static_cast<void>(file.release()); // gzclose closes it.
    return std::make_unique<GzipFile>(gzip);
}
