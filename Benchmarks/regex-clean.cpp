#include "RegexPipelines.h"

#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

// Cleans standard input to standard output as velmora-clean does, but the usual way: find URLs with PCRE2's
// compiled expression, then strip their queries. Builds no list; reads and writes large pieces cut at line
// breaks. The comparison for velmora-clean as a whole process.

namespace {

constexpr std::size_t pieceSize = std::size_t{256} * 1024;

bool writeAll(std::string_view text)
{
    while (!text.empty()) {
        const ssize_t count = ::write(STDOUT_FILENO, text.data(), text.size());
        if (count < 0)
            return false;
        text.remove_prefix(static_cast<std::size_t>(count));
    }
    return true;
}

} // namespace

int main()
{
    const std::unique_ptr<RegexPipeline> pipeline = RegexPipeline::pcre2Jit();
    std::vector<char> buffer(pieceSize);
    std::string output;
    std::size_t held = 0;
    while (true) {
        if (held == buffer.size())
            buffer.resize(buffer.size() * 2);
        const ssize_t count = ::read(STDIN_FILENO, buffer.data() + held, buffer.size() - held);
        if (count < 0)
            return EXIT_FAILURE;
        const std::string_view text(buffer.data(), held + static_cast<std::size_t>(count));
        const std::size_t end = count == 0 ? text.size() : text.rfind('\n') + 1; // 0 without any.
        output.clear();
        pipeline->appendCleaned(text.substr(0, end), output);
        if (!writeAll(output))
            return EXIT_FAILURE;
        held = text.size() - end;
        std::memmove(buffer.data(), buffer.data() + end, held);
        if (count == 0)
            return EXIT_SUCCESS;
    }
}
