#include "Options.h"

#include "IgnoredHost.h"
#include "Printable.h"

#include <algorithm>
#include <charconv>
#include <optional>

namespace {

constexpr std::size_t mostJobs = 1024;

// Reads the command line from left to right.
class Parser {
public:
    explicit Parser(std::span<const char *const> arguments)
        : rest_(arguments)
    {
    }

    Options parse()
    {
        while (!rest_.empty() && options_.problem.empty() && !answersAtOnce()) {
            const std::string_view argument = take();
            if (onlyFiles_ || argument == "-" || !argument.starts_with('-'))
                options_.files.emplace_back(argument);
            else if (argument == "--")
                onlyFiles_ = true;
            else
                takeOption(argument);
        }
        if (options_.problem.empty() && !answersAtOnce())
            checkCombination();
        if (options_.files.empty())
            options_.files.emplace_back("-");
        return std::move(options_);
    }

private:
    bool answersAtOnce() const
    {
        return options_.mode == Options::Mode::help || options_.mode == Options::Mode::version;
    }

    std::string_view take()
    {
        const std::string_view argument = rest_.front();
        rest_ = rest_.subspan(1);
        return argument;
    }

    void takeOption(std::string_view option)
    {
        const std::string_view name = option.substr(0, option.find('='));
        if (option == "--help" || option == "-h")
            options_.mode = Options::Mode::help;
        else if (option == "--version")
            options_.mode = Options::Mode::version;
        else if (option == "--jsonl")
            jsonLines_ = true;
        else if (option == "--detect")
            detect_ = true;
        else if (option == "--in-place")
            inPlace_ = true;
        else if (option == "--report")
            options_.report = true;
        else if (name == "--ignore-host")
            takeHost(valueOf(option, "--ignore-host needs a host"));
        else if (name == "--jobs")
            takeJobs(valueOf(option, "--jobs needs a number"));
        else
            options_.problem = "unknown option: " + printable(option);
    }

    // What stands behind "=", or else the next argument.
    std::string_view valueOf(std::string_view option, std::string_view complaint)
    {
        const std::size_t equals = option.find('=');
        const std::string_view value = equals != std::string_view::npos ? option.substr(equals + 1)
                                       : rest_.empty()                  ? std::string_view()
                                                                        : take();
        if (value.empty())
            options_.problem = complaint;
        return value;
    }

    void takeHost(std::string_view value)
    {
        if (value.empty())
            return;
        if (std::optional<std::string> host = ignoredHost(value))
            options_.ignoredHosts.insert(*std::move(host));
        else
            options_.problem = "--ignore-host: no host can be made out in \"" + printable(value) + '"';
    }

    void takeJobs(std::string_view value)
    {
        if (value.empty())
            return;
        const char *const end = value.data() + value.size();
        const auto [stop, error] = std::from_chars(value.data(), end, options_.jobs);
        if (error != std::errc() || stop != end || options_.jobs < 1 || options_.jobs > mostJobs)
            options_.problem =
                "--jobs: \"" + printable(value) + "\" is no number from 1 to " + std::to_string(mostJobs);
    }

    void checkCombination()
    {
        const bool readsInput =
            options_.files.empty() ||
            std::find(options_.files.begin(), options_.files.end(), "-") != options_.files.end();
        if (detect_ && !jsonLines_)
            options_.problem = "--detect needs --jsonl";
        else if (options_.report && jsonLines_)
            options_.problem = "--report and --jsonl exclude each other";
        else if (inPlace_ && jsonLines_)
            options_.problem = "--in-place and --jsonl exclude each other";
        else if (inPlace_ && readsInput)
            options_.problem = "--in-place needs files; standard input has no place";
        else if (jsonLines_)
            options_.mode = detect_ ? Options::Mode::detection : Options::Mode::jsonLines;
        else if (inPlace_)
            options_.mode = Options::Mode::inPlace;
    }

    std::span<const char *const> rest_;
    Options options_;
    bool onlyFiles_ = false;
    bool jsonLines_ = false;
    bool detect_ = false;
    bool inPlace_ = false;
};

} // namespace

Options Options::parse(std::span<const char *const> arguments)
{
    return Parser(arguments).parse();
}

std::string_view Options::helpText()
{
    return "usage: velmora-clean [--ignore-host HOST]... [--report] [--jobs N] [FILE]...\n"
           "       velmora-clean --in-place [--ignore-host HOST]... [--report] [--jobs N] FILE...\n"
           "       velmora-clean --jsonl [--detect] [--ignore-host HOST]... [--jobs N] [FILE]...\n"
           "\n"
           "Takes tracking parameters out of the links in a text. Reads the files, or standard\n"
           "input without any or for \"-\", and writes the cleaned text to standard output;\n"
           "everything around the links is kept byte for byte.\n"
           "\n"
           "  --in-place          clean the files themselves, each in one step; a file without\n"
           "                      anything to remove is not touched\n"
           "  --ignore-host HOST  leave links to HOST and its sub-domains alone; repeatable.\n"
           "                      HOST may be a URL or begin with \"*.\"\n"
           "  --report            say on standard error what was removed and where\n"
           "  --jsonl             read {\"text\": ..., \"ignored_hosts\": [...]} line by line and write\n"
           "                      the result of each as one line of JSON\n"
           "  --detect            with --jsonl: write where links stand instead, in UTF-16 units\n"
           "  --jobs N            work on at most N threads; as many as there are processors if\n"
           "                      not given\n"
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
