#include "StartConditions.h"

#include <VelmoraLinux/X11/XcbServer.h>

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

bool isSet(const char *variable)
{
    const char *value = std::getenv(variable);
    return value != nullptr && *value != '\0';
}

// Without a display Qt would end the program with a message that no user understands.
bool hasDesktop()
{
    if (isSet("WAYLAND_DISPLAY"))
        return true;
    if (!isSet("DISPLAY")) {
        std::fputs("velmora: there is no desktop here: neither DISPLAY nor WAYLAND_DISPLAY is set.\n",
                   stderr);
        return false;
    }
    if (!connectToXServer()) {
        std::fprintf(stderr, "velmora: the display %s cannot be reached.\n", std::getenv("DISPLAY"));
        return false;
    }
    return true;
}

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
    if (!hasDesktop())
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
