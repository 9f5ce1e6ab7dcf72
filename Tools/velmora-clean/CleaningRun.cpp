#include "CleaningRun.h"

#include "FileReplacement.h"
#include "JsonLines.h"
#include "OrderedPipeline.h"
#include "Printable.h"
#include "Progress.h"
#include "TextCleaning.h"

#include <sched.h>

#include <thread>

namespace {

// Those that this process may use, which can be fewer than the machine has.
std::size_t processors()
{
    cpu_set_t set;
    if (::sched_getaffinity(0, sizeof set, &set) == 0)
        return static_cast<std::size_t>(CPU_COUNT(&set));
    return std::max(1U, std::thread::hardware_concurrency());
}

struct Job {
    Piece piece;
    CleanedPiece result;
};

} // namespace

CleaningRun::CleaningRun(const Options &options)
    : options_(options)
    , jobs_(options.jobs != 0 ? options.jobs : processors())
    , cleaners_(options.ignoredHosts)
{
}

bool CleaningRun::succeeds()
{
    for (const std::string &name : options_.files) {
        if (output_.failed())
            break;
        if (options_.mode == Options::Mode::inPlace)
            cleanInPlace(name);
        else if (options_.mode == Options::Mode::text)
            cleanText(name);
        else
            answerRequests(name);
    }
    if (output_.failed() && !output_.readerLeft())
        complain("cannot write: " + output_.problem());
    return !failed_ && !output_.failed() && !messages_.failed();
}

void CleaningRun::answerRequests(const std::string &name)
{
    InputFile file(name);
    if (!mayBeRead(file))
        return;
    const JsonLines requests(options_.mode == Options::Mode::detection ? JsonLines::Answer::detection
                                                                       : JsonLines::Answer::cleaning,
                             cleaners_, printable(file.name()));
    stream(
        file, PieceReader(file, PieceReader::Cut::behindLines, JsonLines::longestRequest, true),
        [&requests](const Piece &piece, CleanedPiece &result) { requests.answer(piece, result); },
        [this](const Piece &, const CleanedPiece &result) { return writeOut(result); });
}

void CleaningRun::cleanText(const std::string &name)
{
    InputFile file(name);
    if (!mayBeRead(file))
        return;
    const auto cleaner = cleaners_.cleanerFor({});
    const TextCleaning cleaning(*cleaner, options_.report, printable(file.name()));
    stream(
        file, PieceReader(file, PieceReader::Cut::behindWords, TextCleaning::longestWord, options_.report),
        [&cleaning](const Piece &piece, CleanedPiece &result) { cleaning.clean(piece, result); },
        [this](const Piece &, const CleanedPiece &result) { return writeOut(result); });
}

void CleaningRun::cleanInPlace(const std::string &name)
{
    const std::string shownName = printable(name);
    if (const std::string obstacle = FileReplacement::obstacle(name); !obstacle.empty()) {
        complain(shownName + ": " + obstacle);
        return;
    }
    InputFile file(name);
    FileReplacement replacement(file, name);
    const auto cleaner = cleaners_.cleanerFor({});
    const TextCleaning cleaning(*cleaner, options_.report, shownName);
    stream(
        file, PieceReader(file, PieceReader::Cut::behindWords, TextCleaning::longestWord, options_.report),
        [&cleaning](const Piece &piece, CleanedPiece &result) { cleaning.clean(piece, result); },
        [&replacement](const Piece &piece, const CleanedPiece &result) {
            return replacement.append(piece.text(), result.output, result.changed);
        });
    if (file.problem().empty() && !replacement.commit())
        complain(shownName + ": " + replacement.problem());
}

bool CleaningRun::mayBeRead(const InputFile &file)
{
    if (!file.isSameFileAs(STDOUT_FILENO))
        return true;
    complain(printable(file.name()) + ": input file is output file; --in-place cleans a file itself");
    return false;
}

void CleaningRun::stream(InputFile &file, PieceReader reader, const Work &work, const Sink &sink)
{
    Progress progress(messages_, file.size());
    OrderedPipeline<Job> pipeline({
        [&reader](Job &job) { return reader.next(job.piece); },
        [&work](Job &job) {
            job.result.clear();
            work(job.piece, job.result);
        },
        [&, this](const Job &job) {
            const bool goesOn = sink(job.piece, job.result);
            messages_.write(job.result.messages);
            failed_ = failed_ || job.result.failed;
            progress.advance(job.piece.size);
            return goesOn;
        },
        [&file] { file.interrupt(); },
    });
    pipeline.run(jobs_);
    if (!file.problem().empty())
        complain(printable(file.name()) + ": " + file.problem());
}

bool CleaningRun::writeOut(const CleanedPiece &result)
{
    output_.write(result.output);
    return !output_.failed();
}

void CleaningRun::complain(const std::string &message)
{
    failed_ = true;
    messages_.complain(message);
}
