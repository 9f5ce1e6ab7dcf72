#include "Output.h"

#include <unistd.h>

#include <cerrno>
#include <system_error>

void Output::write(std::string_view text)
{
    while (!text.empty() && error_ == 0) {
        const ssize_t count = ::write(descriptor_, text.data(), text.size());
        if (count >= 0)
            text.remove_prefix(static_cast<std::size_t>(count));
        else if (errno != EINTR)
            error_ = errno;
    }
}

bool Output::readerLeft() const
{
    return error_ == EPIPE;
}

std::string Output::problem() const
{
    return std::generic_category().message(error_);
}
