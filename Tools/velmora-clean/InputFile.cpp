#include "InputFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

InputFile::InputFile(const std::string &name)
    : name_(name == "-" ? "(standard input)" : name)
    , descriptor_(name == "-" ? STDIN_FILENO : ::open(name.c_str(), O_RDONLY | O_CLOEXEC))
{
    if (descriptor_ < 0) {
        fail();
        return;
    }
    struct stat status = {};
    if (::fstat(descriptor_, &status) == 0 && S_ISREG(status.st_mode))
        size_ = static_cast<std::size_t>(status.st_size);
}

InputFile::~InputFile()
{
    if (descriptor_ > STDIN_FILENO)
        ::close(descriptor_);
}

std::size_t InputFile::read(std::span<char> buffer)
{
    if (!problem_.empty())
        return 0;
    while (true) {
        const ssize_t count = ::read(descriptor_, buffer.data(), buffer.size());
        if (count >= 0)
            return static_cast<std::size_t>(count);
        if (errno != EINTR) {
            fail();
            return 0;
        }
    }
}

void InputFile::fail()
{
    problem_ = std::generic_category().message(errno);
}
