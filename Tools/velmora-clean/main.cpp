#include "InputFile.h"
#include "JsonLines.h"
#include "LineSplitter.h"
#include "Options.h"
#include "Output.h"
#include "Progress.h"
#include "TextCleaning.h"

#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <exception>
#include <functional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace {

constexpr int somethingFailed = 1;
constexpr int notUnderstood = 2;
constexpr std::size_t pieceSize = std::size_t{256} * 1024;
// Longer requests are refused; their lines are not held in memory.
constexpr std::size_t longestRequest = std::size_t{256} * 1024 * 1024;

velmora::LinkCleaner makeCleaner(const Options &options)
{
    using Configuration = velmora::LinkCleanerConfiguration;
    return velmora::LinkCleaner(Configuration(options.ignoredHosts,
                                              Configuration::defaultTrackedParameterNames(),
                                              Configuration::defaultTrackedParameterPrefixes(),
                                              Configuration::defaultValueSensitiveTrackedParameters()));
}

using Receiver = std::function<void(std::string_view)>;

// Reads files and standard input, and remembers whether all went well.
class Work {
public:
    explicit Work(const Options &options)
        : options_(options)
        , cleaner_(makeCleaner(options))
    {
    }

    int run()
    {
        for (const std::string &name : options_.files) {
            InputFile file(name);
            if (options_.mode == Options::Mode::text)
                cleanText(file);
            else
                answerRequests(file);
            if (!file.problem().empty())
                complain(file.name() + ": " + file.problem());
        }
        output_.flush();
        if (output_.failed() && !output_.readerLeft())
            complain("cannot write: " + output_.problem());
        messages_.flush();
        return failed_ || output_.failed() ? somethingFailed : 0;
    }

private:
    void cleanText(InputFile &file)
    {
        TextCleaning cleaning(cleaner_, output_, options_.report ? &messages_ : nullptr, file.name());
        readAll(file, [&cleaning](std::string_view piece) { cleaning.add(piece); });
        cleaning.finish();
    }

    void answerRequests(InputFile &file)
    {
        JsonLines requests(options_.mode == Options::Mode::detection ? JsonLines::Answer::detection
                                                                     : JsonLines::Answer::cleaning,
                           options_.ignoredHosts);
        std::size_t number = 0;
        LineSplitter lines(longestRequest, [&](std::string_view line, bool tooLong) {
            ++number;
            answer(requests, line, tooLong, file.name() + ':' + std::to_string(number));
        });
        readAll(file, [&lines](std::string_view piece) { lines.add(piece); });
        lines.finish();
    }

    // A blank line is answered by a blank line, so that answers stand where their requests stand.
    void answer(JsonLines &requests, std::string_view line, bool tooLong, const std::string &place)
    {
        if (line.find_first_not_of(" \t\r") != std::string_view::npos) {
            const JsonLines::Reply reply =
                tooLong ? JsonLines::malformed("the line is too long") : requests.reply(line);
            output_.write(reply.line);
            if (!reply.problem.empty())
                complain(place + ": " + reply.problem);
        }
        output_.write("\n");
    }

    void readAll(InputFile &file, const Receiver &receiver)
    {
        Progress progress(file.size());
        std::vector<char> buffer(pieceSize);
        while (const std::size_t count = file.read(buffer)) {
            receiver(std::string_view(buffer.data(), count));
            progress.advance(count);
            // Whoever types or pipes line by line sees each line at once.
            if (count < buffer.size())
                output_.flush();
            if (output_.failed())
                return;
        }
    }

    void complain(const std::string &message)
    {
        failed_ = true;
        messages_.write("velmora-clean: " + message + '\n');
        messages_.flush();
    }

    const Options &options_;
    velmora::LinkCleaner cleaner_;
    Output output_{STDOUT_FILENO};
    Output messages_{STDERR_FILENO};
    bool failed_ = false;
};

int say(int descriptor, std::string_view text, int status)
{
    Output output(descriptor);
    output.write(text);
    output.flush();
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
    return Work(options).run();
}

} // namespace

int main(int count, char *arguments[])
{
    // A reader that goes away is met where it is written to.
    static_cast<void>(std::signal(SIGPIPE, SIG_IGN));
    try {
        const std::vector<const char *> list(arguments + (count > 0 ? 1 : 0), arguments + count);
        return run(list);
    } catch (const std::exception &problem) { // There is no memory left.
        static_cast<void>(std::fprintf(stderr, "velmora-clean: %s\n", problem.what()));
        return somethingFailed;
    }
}
