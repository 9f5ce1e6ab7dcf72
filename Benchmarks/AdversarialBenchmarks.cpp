#include "AdversarialTexts.h"

#include <VelmoraCore/LinkCleaner.h>
#include <VelmoraCore/LinkDetector.h>

#include <benchmark/benchmark.h>

namespace {

using Configuration = velmora::LinkCleanerConfiguration;

constexpr std::size_t kibibyte = 1024;

void clean(benchmark::State &state, const AdversarialFamily &family, std::size_t size)
{
    const velmora::LinkCleaner cleaner(Configuration::withDefaultRules({"ignored.com"}));
    const std::string text = family.text(size);
    for ([[maybe_unused]] const auto round : state)
        benchmark::DoNotOptimize(cleaner.clean(text));
    state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(text.size()));
}

void detect(benchmark::State &state, const AdversarialFamily &family, std::size_t size)
{
    const std::string text = family.text(size);
    for ([[maybe_unused]] const auto round : state)
        benchmark::DoNotOptimize(velmora::LinkDetector().matches(text));
    state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(text.size()));
}

void add(const char *what, void (*work)(benchmark::State &, const AdversarialFamily &, std::size_t),
         const AdversarialFamily &family, std::size_t size)
{
    const std::string name =
        std::string(what) + '/' + std::string(family.name) + '/' + std::to_string(size / kibibyte);
    benchmark::RegisterBenchmark(
        name.c_str(), [work, &family, size](benchmark::State &state) { work(state, family, size); })
        ->Unit(benchmark::kMillisecond)
        ->MinTime(0.05);
}

[[maybe_unused]] const bool registered = [] {
    for (const AdversarialFamily &family : adversarialFamilies()) {
        for (const std::size_t size : {16 * kibibyte, 128 * kibibyte, 1024 * kibibyte, 2048 * kibibyte}) {
            add("adversarial clean", clean, family, size);
            add("adversarial detect", detect, family, size);
        }
        if (family.name == "one word")
            add("adversarial clean", clean, family, 16 * 1024 * kibibyte);
    }
    return true;
}();

} // namespace
