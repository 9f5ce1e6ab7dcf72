#include "StartConditions.h"

#include "DisplaySystem.h"

#include <sys/resource.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <string_view>

namespace {

constexpr int wrongUse = 2;

constexpr auto helpText = "Usage: velmora [OPTION]\n"
                          "Takes tracking parameters out of copied links, from the system tray.\n"
                          "\n"
                          "Started while it is running already, it shows its settings.\n"
                          "\n"
                          "  --help       shows this text\n"
                          "  --version    shows the version\n";

} // namespace

std::optional<int> StartConditions::check(int argc, char **argv, const char *version)
{
    for (int i = 1; i < argc; ++i) {
        const std::string_view argument = argv[i];
        if (argument == "--help" || argument == "-h") {
            std::fputs(helpText, stdout);
            return EXIT_SUCCESS;
        }
        if (argument == "--version") {
            std::printf("velmora %s\n", version);
            return EXIT_SUCCESS;
        }
        // Passed by the previous version during an update.
        const bool isHandover = argument.starts_with("--handover=");
        if (argument.starts_with("--") && !isHandover) {
            std::fprintf(stderr, "velmora: unknown option %s; see velmora --help\n", argv[i]);
            return wrongUse;
        }
    }
    if (!DisplaySystem::choose(argc, argv))
        return EXIT_FAILURE;
    return std::nullopt;
}

void StartConditions::ignoreWriteSignals()
{
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
}

void StartConditions::forbidCoreDumps()
{
    rlimit limit{};
    if (getrlimit(RLIMIT_CORE, &limit) == 0) {
        limit.rlim_cur = 0;
        (void)setrlimit(RLIMIT_CORE, &limit);
    }
    if (FILE *filter = std::fopen("/proc/self/coredump_filter", "we")) {
        std::fputs("0", filter);
        std::fclose(filter);
    }
}
