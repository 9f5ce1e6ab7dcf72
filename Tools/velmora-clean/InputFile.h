#pragma once

#include <sys/stat.h>

#include <cstddef>
#include <span>
#include <string>

// A file or standard input, read as the bytes come.
class InputFile {
public:
    // "-" is standard input.
    explicit InputFile(const std::string &name);
    ~InputFile();
    InputFile(const InputFile &) = delete;
    InputFile &operator=(const InputFile &) = delete;

    // How the file is called in messages.
    const std::string &name() const { return name_; }

    // How many bytes were put into `buffer`: what is there already, but at least one unless the file is at
    // its end, cannot be read further, or was interrupted.
    std::size_t read(std::span<char> buffer);

    // Ends a `read` that waits, and all that follow. Any thread may call this.
    void interrupt() const;

    // Why the file could not be opened or read; empty if all is well.
    const std::string &problem() const { return problem_; }

    int descriptor() const { return descriptor_; }

    bool isRegular() const { return S_ISREG(status_.st_mode); }

    // Whether this is the regular file behind `descriptor`.
    bool isSameFileAs(int descriptor) const;

    // 0 when it is not known.
    std::size_t size() const { return isRegular() ? static_cast<std::size_t>(status_.st_size) : 0; }

private:
    bool isReady(int patience) const;
    std::size_t readOnce(std::span<char> buffer);
    void fail();

    std::string name_;
    std::string problem_;
    int descriptor_;
    struct stat status_ = {};
    int interruption_ = -1; // Readable once interrupted; only where reading may wait.
    bool atEnd_ = false;
};
