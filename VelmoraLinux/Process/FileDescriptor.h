#pragma once

#include <unistd.h>

#include <utility>

// Owns a file descriptor.
class FileDescriptor {
public:
    FileDescriptor() = default;

    explicit FileDescriptor(int number)
        : number_(number)
    {
    }

    FileDescriptor(FileDescriptor &&other) noexcept
        : number_(std::exchange(other.number_, -1))
    {
    }

    FileDescriptor &operator=(FileDescriptor &&other) noexcept
    {
        std::swap(number_, other.number_);
        return *this;
    }

    FileDescriptor(const FileDescriptor &) = delete;
    FileDescriptor &operator=(const FileDescriptor &) = delete;

    ~FileDescriptor()
    {
        if (isOpen())
            ::close(number_);
    }

    [[nodiscard]] int get() const { return number_; }

    [[nodiscard]] bool isOpen() const { return number_ >= 0; }

private:
    int number_ = -1;
};
