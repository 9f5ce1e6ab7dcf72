#include "CleaningRun.h"
#include "Options.h"
#include "Output.h"

#include <fcntl.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <exception>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace {

constexpr int somethingFailed = 1;
constexpr int notUnderstood = 2;

// A file that is opened must not come to stand where standard output or error was closed, or messages would
// be written into it. In their place stands what can be neither read nor written, as before.
void fillStandardDescriptors()
{
    for (const int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        if (::fcntl(descriptor, F_GETFD) < 0) // The lowest free one is the one that is given.
            static_cast<void>(::open("/dev/null", descriptor == STDIN_FILENO ? O_WRONLY : O_RDONLY));
    }
}

int say(int descriptor, std::string_view text, int status)
{
    Output output(descriptor);
    output.write(text);
    return output.failed() ? somethingFailed : status;
}

int run(std::span<const char *const> arguments)
{
    const Options options = Options::parse(arguments);
    if (options.mode == Options::Mode::help)
        return say(STDOUT_FILENO, Options::helpText(), 0);
    if (options.mode == Options::Mode::version)
        return say(STDOUT_FILENO, Options::versionText(), 0);
    if (!options.problem.empty())
        return say(STDERR_FILENO, "velmora-clean: " + options.problem + "\nTry: velmora-clean --help\n",
                   notUnderstood);
    return CleaningRun(options).succeeds() ? 0 : somethingFailed;
}

} // namespace

int main(int count, char *arguments[])
{
    fillStandardDescriptors();
    // A reader that goes away, and a file that may not grow, are met where they are written to.
    static_cast<void>(std::signal(SIGPIPE, SIG_IGN));
    static_cast<void>(std::signal(SIGXFSZ, SIG_IGN));
    try {
        const std::vector<const char *> list(arguments + (count > 0 ? 1 : 0), arguments + count);
        return run(list);
    } catch (const std::exception &problem) { // There is no memory left.
        static_cast<void>(std::fprintf(stderr, "velmora-clean: %s\n", problem.what()));
        return somethingFailed;
    }
}
