#pragma once

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
    // its end or cannot be read further; then `problem` tells which.
    std::size_t read(std::span<char> buffer);

    // Why the file could not be opened or read; empty if all is well.
    const std::string &problem() const { return problem_; }

    // 0 when it is not known.
    std::size_t size() const { return size_; }

private:
    void fail();

    std::string name_;
    std::string problem_;
    std::size_t size_ = 0;
    int descriptor_;
};
