#include "InputFile.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <system_error>

InputFile::InputFile(const std::string &name)
    : name_(name == "-" ? "(standard input)" : name)
    , descriptor_(name == "-" ? STDIN_FILENO : ::open(name.c_str(), O_RDONLY | O_CLOEXEC))
{
    if (descriptor_ < 0 || ::fstat(descriptor_, &status_) != 0) {
        fail();
        return;
    }
    if (!isRegular())
        interruption_ = ::eventfd(0, EFD_CLOEXEC);
}

InputFile::~InputFile()
{
    if (descriptor_ > STDIN_FILENO)
        ::close(descriptor_);
    if (interruption_ >= 0)
        ::close(interruption_);
}

std::size_t InputFile::read(std::span<char> buffer)
{
    constexpr int forever = -1;
    if (!problem_.empty())
        return 0;
    if (isRegular())
        return readOnce(buffer);
    std::size_t length = 0;
    while (length < buffer.size() && isReady(length == 0 ? forever : 0)) {
        const std::size_t count = readOnce(buffer.subspan(length));
        if (count == 0)
            break;
        length += count;
    }
    return length;
}

// Whether reading gives an answer at once, after at most `patience` milliseconds.
bool InputFile::isReady(int patience) const
{
    std::array<pollfd, 2> waiting = {pollfd{descriptor_, POLLIN, 0}, pollfd{interruption_, POLLIN, 0}};
    while (::poll(waiting.data(), waiting.size(), patience) < 0 && errno == EINTR) {
    }
    return waiting[1].revents == 0 && (waiting[0].revents != 0 || patience < 0);
}

// The end is remembered: a terminal would go on behind it.
std::size_t InputFile::readOnce(std::span<char> buffer)
{
    while (!atEnd_ && problem_.empty()) {
        const ssize_t count = ::read(descriptor_, buffer.data(), buffer.size());
        if (count > 0)
            return static_cast<std::size_t>(count);
        if (count == 0)
            atEnd_ = true;
        else if (errno != EINTR)
            fail();
    }
    return 0;
}

void InputFile::interrupt() const
{
    const eventfd_t one = 1;
    if (interruption_ >= 0)
        static_cast<void>(::eventfd_write(interruption_, one));
}

bool InputFile::isSameFileAs(int descriptor) const
{
    struct stat other = {};
    return isRegular() && ::fstat(descriptor, &other) == 0 && other.st_dev == status_.st_dev &&
           other.st_ino == status_.st_ino;
}

void InputFile::fail()
{
    problem_ = std::generic_category().message(errno);
}
