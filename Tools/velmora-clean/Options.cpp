#include "Options.h"

namespace {

constexpr std::string_view ignoreHost = "--ignore-host";

// The arguments not yet looked at.
class Arguments {
public:
    explicit Arguments(std::span<const char *const> arguments)
        : rest_(arguments)
    {
    }

    bool atEnd() const { return rest_.empty(); }

    std::string_view take()
    {
        const std::string_view argument = rest_.front();
        rest_ = rest_.subspan(1);
        return argument;
    }

private:
    std::span<const char *const> rest_;
};

void takeOption(Options &options, bool &detect, std::string_view option, Arguments &arguments)
{
    if (option == "--jsonl") {
        options.mode = Options::Mode::jsonLines;
    } else if (option == "--detect") {
        detect = true;
    } else if (option == "--report") {
        options.report = true;
    } else if (option.starts_with(ignoreHost) && option.substr(ignoreHost.size()).starts_with('=')) {
        options.ignoredHosts.emplace(option.substr(ignoreHost.size() + 1));
    } else if (option == ignoreHost && !arguments.atEnd()) {
        options.ignoredHosts.emplace(arguments.take());
    } else if (option == ignoreHost) {
        options.problem = "--ignore-host needs a host";
    } else {
        options.problem = "unknown option: " + std::string(option);
    }
}

void checkCombination(Options &options, bool detect)
{
    if (detect && options.mode != Options::Mode::jsonLines)
        options.problem = "--detect needs --jsonl";
    else if (options.report && options.mode == Options::Mode::jsonLines)
        options.problem = "--report and --jsonl exclude each other";
    else if (detect)
        options.mode = Options::Mode::detection;
}

} // namespace

Options Options::parse(std::span<const char *const> arguments)
{
    Options options;
    bool detect = false;
    bool onlyFiles = false;
    Arguments rest(arguments);
    while (!rest.atEnd() && options.problem.empty()) {
        const std::string_view argument = rest.take();
        if (onlyFiles || argument == "-" || !argument.starts_with('-')) {
            options.files.emplace_back(argument);
        } else if (argument == "--") {
            onlyFiles = true;
        } else if (argument == "--help" || argument == "-h") {
            options.mode = Mode::help;
            return options;
        } else if (argument == "--version") {
            options.mode = Mode::version;
            return options;
        } else {
            takeOption(options, detect, argument, rest);
        }
    }
    if (options.problem.empty())
        checkCombination(options, detect);
    if (options.files.empty())
        options.files.emplace_back("-");
    return options;
}

std::string_view Options::helpText()
{
    return "usage: velmora-clean [--ignore-host HOST]... [--report] [FILE]...\n"
           "       velmora-clean --jsonl [--detect] [--ignore-host HOST]... [FILE]...\n"
           "\n"
           "Takes tracking parameters out of the links in a text. Reads the files, or standard\n"
           "input without any or for \"-\", and writes the cleaned text to standard output;\n"
           "everything around the links is kept byte for byte.\n"
           "\n"
           "  --ignore-host HOST  leave links to HOST and its sub-domains alone; repeatable\n"
           "  --report            say on standard error what was removed and where\n"
           "  --jsonl             read {\"text\": ..., \"ignored_hosts\": [...]} line by line and write\n"
           "                      the result of each as one line of JSON\n"
           "  --detect            with --jsonl: write where links stand instead, in UTF-16 units\n"
           "  --help              this text\n"
           "  --version           the version\n"
           "\n"
           "Exit status: 0, all was read and written; 1, something could not be; 2, the command\n"
           "line was not understood.\n";
}

std::string_view Options::versionText()
{
    return "velmora-clean " VELMORA_VERSION "\n";
}
