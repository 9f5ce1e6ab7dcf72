#include "Corpora.h"
#include "RegexPipelines.h"

#include <VelmoraCore/LinkCleaner.h>
#include <VelmoraCore/LinkDetector.h>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <cstring>
#include <functional>
#include <stdexcept>
#include <utility>

namespace {

using Configuration = velmora::LinkCleanerConfiguration;
using Work = std::function<void(const std::string &)>;

using Texts = std::vector<std::string>;

void run(benchmark::State &state, const Texts &texts, const Work &work)
{
    std::size_t size = 0;
    for (const std::string &text : texts)
        size += text.size();
    for ([[maybe_unused]] const auto round : state) {
        for (const std::string &text : texts)
            work(text);
    }
    state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(size));
}

// The text cut at line ends into pieces of about `size` bytes, as one reads a stream. In one call over 100 MB
// most of the time goes into fresh memory.
Texts inPieces(const std::string &text, std::size_t size)
{
    Texts pieces;
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t end = at + size < text.size() ? text.rfind('\n', at + size) + 1 : text.size();
        pieces.push_back(text.substr(at, end - at));
        at = end;
    }
    return pieces;
}

Work pipelineWork(const std::function<std::unique_ptr<RegexPipeline>()> &make)
{
    return [pipeline = std::shared_ptr<RegexPipeline>(make())](const std::string &text) {
        benchmark::DoNotOptimize(pipeline->clean(text));
    };
}

std::vector<std::pair<std::string, Work>> works()
{
    const velmora::LinkCleaner cleaner(Configuration::withDefaultRules());
    return {
        {"memchr",
         [](const std::string &text) {
             benchmark::DoNotOptimize(std::memchr(text.data(), '\x01', text.size()));
         }},
        {"memcpy", [](const std::string &text) { benchmark::DoNotOptimize(std::string(text)); }},
        {"velmora edits",
         [cleaner](const std::string &text) { benchmark::DoNotOptimize(cleaner.edits(text)); }},
        {"velmora append",
         [cleaner, output = std::string()](const std::string &text) mutable {
             output.clear();
             benchmark::DoNotOptimize(cleaner.appendCleaned(text, output));
         }},
        {"velmora clean",
         [cleaner](const std::string &text) { benchmark::DoNotOptimize(cleaner.clean(text)); }},
        {"velmora detect",
         [](const std::string &text) { benchmark::DoNotOptimize(velmora::LinkDetector().matches(text)); }},
        {"RE2", pipelineWork(RegexPipeline::re2)},
        {"PCRE2-JIT", pipelineWork(RegexPipeline::pcre2Jit)},
        {"PCRE2-JIT, hosts too", pipelineWork(RegexPipeline::pcre2JitWithBareHosts)},
        {"Hyperscan", pipelineWork(RegexPipeline::hyperscan)},
        {"PCRE2-JIT append",
         [pipeline = std::shared_ptr<RegexPipeline>(RegexPipeline::pcre2Jit()),
          output = std::string()](const std::string &text) mutable {
             output.clear();
             pipeline->appendCleaned(text, output);
             benchmark::DoNotOptimize(output);
         }},
    };
}

// A comparison is worth something only when everybody does the same work.
void requireSameResults(const std::string &text)
{
    const velmora::LinkCleaningResult ours =
        velmora::LinkCleaner(Configuration::withDefaultRules()).clean(text);
    for (const auto &make : {RegexPipeline::re2, RegexPipeline::pcre2Jit,
                             RegexPipeline::pcre2JitWithBareHosts, RegexPipeline::hyperscan}) {
        if (make()->clean(text) != ours)
            throw std::logic_error("a pipeline cleans the text otherwise than we do");
    }
}

// The time of single calls, which an average hides. Includes reading the clock, about 20 ns.
void oneShortLink(benchmark::State &state)
{
    const velmora::LinkCleaner cleaner(Configuration::withDefaultRules());
    const std::string link = corpora::shortLink();
    std::vector<double> nanoseconds;
    nanoseconds.reserve(1U << 20U);
    for ([[maybe_unused]] const auto round : state) {
        const auto begin = std::chrono::steady_clock::now();
        benchmark::DoNotOptimize(cleaner.clean(link));
        const std::chrono::duration<double, std::nano> time = std::chrono::steady_clock::now() - begin;
        if (nanoseconds.size() < nanoseconds.capacity())
            nanoseconds.push_back(time.count());
    }
    std::sort(nanoseconds.begin(), nanoseconds.end());
    state.counters["p50_ns"] = nanoseconds[nanoseconds.size() / 2];
    state.counters["p99_ns"] = nanoseconds[nanoseconds.size() * 99 / 100];
}

[[maybe_unused]] const bool registered = [] {
    constexpr std::size_t size = std::size_t{16} * 1024 * 1024;
    constexpr std::size_t pieceSize = std::size_t{256} * 1024;
    const std::string links = corpora::linkLines(1'000'000);
    const std::string prose = corpora::proseWithLinks(size, 500);
    requireSameResults(prose);
    const auto texts = {
        std::pair{"prose without links", std::make_shared<Texts>(Texts{corpora::prose(size)})},
        std::pair{"prose with a link every 500 bytes, in pieces",
                  std::make_shared<Texts>(inPieces(prose, pieceSize))},
        std::pair{"prose with a link every 500 bytes, in one call", std::make_shared<Texts>(Texts{prose})},
        std::pair{"1 M tracked links, in pieces", std::make_shared<Texts>(inPieces(links, pieceSize))},
        std::pair{"1 M tracked links, in one call", std::make_shared<Texts>(Texts{links})},
    };
    for (const auto &[name, text] : texts) {
        for (const auto &[who, work] : works()) {
            benchmark::RegisterBenchmark(
                (std::string(name) + '/' + who).c_str(),
                [text = text, work = work](benchmark::State &state) { run(state, *text, work); })
                ->Unit(benchmark::kMillisecond);
        }
    }
    benchmark::RegisterBenchmark("one short link/velmora clean", oneShortLink);
    return true;
}();

} // namespace
