#include "StartConditions.h"

#include "ActionName.h"
#include "DisplaySystem.h"

#include <sys/resource.h>

#include <algorithm>
#include <array>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <string_view>

namespace {

constexpr int wrongUse = 2;

constexpr auto usage =
    "Usage: velmora [--settings | --popover | --clean | --pause | --quit | --help | --version]\n";
constexpr auto helpText = "Takes tracking parameters out of copied links, from the system tray.\n"
                          "\n"
                          "Started while it is running already, it shows its settings.\n"
                          "\n"
                          "  --settings   shows the settings\n"
                          "  --popover    shows the last cleaned link, for the keyboard\n"
                          "  --clean      cleans the link that a notice asks about\n"
                          "  --pause      pauses cleaning, or resumes it\n"
                          "  --quit       ends the program that is running\n"
                          "  --help       shows this text\n"
                          "  --version    shows the version\n";

// Those of Qt, which session managers and developers pass. Each has a value behind it.
constexpr std::array<std::string_view, 7> toolkitOptions{
    "platform", "platformpluginpath", "platformtheme", "plugin", "display", "qwindowgeometry", "session"};

bool isToolkitOption(std::string_view argument)
{
    const auto name = argument.substr(std::min(argument.find_first_not_of('-'), argument.size()));
    return argument.starts_with('-') &&
           std::find(toolkitOptions.begin(), toolkitOptions.end(), name) != toolkitOptions.end();
}

// What is neither an option of ours nor one of Qt; null when all are known.
const char *unknownArgument(int argc, char **argv)
{
    for (int i = 1; i < argc; ++i) {
        const std::string_view argument = argv[i];
        // Passed by the previous version during an update.
        const bool isHandover = argument.starts_with("--handover=");
        const bool isAction = argument.starts_with("--") && ActionName::parse(argument.substr(2));
        if (isToolkitOption(argument) && i + 1 < argc)
            ++i;
        else if (!isHandover && !isAction)
            return argv[i];
    }
    return nullptr;
}

} // namespace

std::optional<int> StartConditions::check(int argc, char **argv, const char *version)
{
    for (int i = 1; i < argc; ++i) {
        const std::string_view argument = argv[i];
        if (argument == "--help" || argument == "-h") {
            std::printf("%s%s", usage, helpText);
            return EXIT_SUCCESS;
        }
        if (argument == "--version") {
            std::printf("velmora %s\n", version);
            return EXIT_SUCCESS;
        }
    }
    if (const char *unknown = unknownArgument(argc, argv)) {
        std::fprintf(stderr, "velmora: unknown argument %s\n%s", unknown, usage);
        return wrongUse;
    }
    if (!DisplaySystem::choose(argc, argv))
        return EXIT_FAILURE;
    return std::nullopt;
}

std::optional<ApplicationInstance::Action> StartConditions::requestedAction(int argc, char **argv)
{
    for (int i = 1; i < argc; ++i) {
        const std::string_view argument = argv[i];
        if (argument.starts_with("--")) {
            if (const auto action = ActionName::parse(argument.substr(2)))
                return action;
        }
    }
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
