#define PCRE2_CODE_UNIT_WIDTH 8

#include "RegexPipelines.h"

#include <VelmoraCore/LinkCleanerConfiguration.h>

#include <hs.h>
#include <pcre2.h>
#include <re2/re2.h>

#include <algorithm>
#include <optional>
#include <stdexcept>
#include <string>
#include <unordered_map>
#include <unordered_set>

namespace {

constexpr const char *urlPattern = R"(https?://[^\s<>"]+)";
constexpr const char *urlOrHostPattern =
    R"((?i)\b(?:https?://|(?:[a-z0-9-]+\.)+(?:com|org|net|de|uk|fr|it|es|io|eu|ru|cn|jp|info)\b)[^\s<>"]*)";

class Trackers {
public:
    using Configuration = velmora::LinkCleanerConfiguration;

    bool contain(std::string_view name, std::optional<std::string_view> value) const
    {
        const std::string key = lower(name);
        if (names_.contains(key))
            return true;
        const auto begins = [&key](const std::string &prefix) { return key.starts_with(prefix); };
        if (std::any_of(prefixes_.begin(), prefixes_.end(), begins))
            return true;
        const auto values = valueSensitive_.find(key);
        return value && values != valueSensitive_.end() && values->second.contains(lower(*value));
    }

private:
    static std::string lower(std::string_view text)
    {
        std::string result(text);
        for (char &c : result)
            c = c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c;
        return result;
    }

    std::unordered_set<std::string> names_{Configuration::defaultTrackedParameterNames().begin(),
                                           Configuration::defaultTrackedParameterNames().end()};
    std::vector<std::string> prefixes_{Configuration::defaultTrackedParameterPrefixes().begin(),
                                       Configuration::defaultTrackedParameterPrefixes().end()};
    std::unordered_map<std::string, Configuration::Strings> valueSensitive_{
        Configuration::defaultValueSensitiveTrackedParameters().begin(),
        Configuration::defaultValueSensitiveTrackedParameters().end()};
};

void strip(std::string_view url, std::string &output, std::vector<velmora::RemovedQueryItem> *removed)
{
    static const Trackers trackers;
    const std::size_t fragment = std::min(url.find('#'), url.size());
    const std::size_t mark = url.substr(0, fragment).find('?');
    if (mark == std::string_view::npos) {
        output += url;
        return;
    }
    output += url.substr(0, mark);
    char separator = '?';
    for (std::size_t at = mark + 1; at <= fragment;) {
        const std::size_t end = std::min(url.find('&', at), fragment);
        const std::string_view item = url.substr(at, end - at);
        const std::size_t equals = item.find('=');
        const std::string_view name = item.substr(0, equals);
        std::optional<std::string_view> value;
        if (equals != std::string_view::npos)
            value = item.substr(equals + 1);
        if (!trackers.contain(name, value)) {
            output += separator;
            output += item;
            separator = '&';
        } else if (removed != nullptr) {
            velmora::RemovedQueryItem &report = removed->emplace_back();
            report.name = name;
            report.value = value;
        }
        at = end + 1;
    }
    output += url.substr(fragment);
}

class Re2Pipeline : public RegexPipeline {
    void find(std::string_view text, std::vector<Span> &spans) const override
    {
        re2::StringPiece match;
        for (std::size_t at = 0; pattern_.Match(text, at, text.size(), RE2::UNANCHORED, &match, 1);) {
            const auto begin = static_cast<std::size_t>(match.data() - text.data());
            at = begin + match.size();
            spans.push_back({begin, at});
        }
    }

    RE2 pattern_{urlPattern, RE2::Latin1};
};

class Pcre2Pipeline : public RegexPipeline {
public:
    explicit Pcre2Pipeline(const char *pattern)
    {
        int error = 0;
        PCRE2_SIZE offset = 0;
        code_.reset(pcre2_compile(reinterpret_cast<PCRE2_SPTR>(pattern), PCRE2_ZERO_TERMINATED, 0, &error,
                                  &offset, nullptr));
        if (!code_ || pcre2_jit_compile(code_.get(), PCRE2_JIT_COMPLETE) != 0)
            throw std::runtime_error("PCRE2 has no compiler for this machine");
        data_.reset(pcre2_match_data_create(1, nullptr));
    }

private:
    void find(std::string_view text, std::vector<Span> &spans) const override
    {
        std::size_t at = 0;
        while (pcre2_jit_match(code_.get(), reinterpret_cast<PCRE2_SPTR>(text.data()), text.size(), at, 0,
                               data_.get(), nullptr) > 0) {
            const PCRE2_SIZE *ends = pcre2_get_ovector_pointer(data_.get());
            spans.push_back({ends[0], ends[1]});
            at = ends[1];
        }
    }

    struct Free {
        void operator()(pcre2_code *code) const { pcre2_code_free(code); }

        void operator()(pcre2_match_data *data) const { pcre2_match_data_free(data); }
    };

    std::unique_ptr<pcre2_code, Free> code_;
    std::unique_ptr<pcre2_match_data, Free> data_;
};

class HyperscanPipeline : public RegexPipeline {
public:
    HyperscanPipeline()
    {
        hs_database_t *database = nullptr;
        hs_compile_error_t *error = nullptr;
        if (hs_compile(urlPattern, HS_FLAG_SOM_LEFTMOST, HS_MODE_BLOCK, nullptr, &database, &error) !=
            HS_SUCCESS)
            throw std::runtime_error("Hyperscan refused the pattern");
        database_.reset(database);
        hs_scratch_t *scratch = nullptr;
        if (hs_alloc_scratch(database, &scratch) != HS_SUCCESS)
            throw std::runtime_error("Hyperscan has no memory");
        scratch_.reset(scratch);
    }

private:
    // Reports every end of a match; the last one of each beginning counts.
    static int take(unsigned, unsigned long long begin, unsigned long long end, unsigned, void *context)
    {
        auto &spans = *static_cast<std::vector<Span> *>(context);
        if (!spans.empty() && spans.back().begin == begin)
            spans.back().end = end;
        else
            spans.push_back({begin, end});
        return 0;
    }

    void find(std::string_view text, std::vector<Span> &spans) const override
    {
        hs_scan(database_.get(), text.data(), static_cast<unsigned>(text.size()), 0, scratch_.get(), take,
                &spans);
    }

    struct Free {
        void operator()(hs_database_t *database) const { hs_free_database(database); }

        void operator()(hs_scratch_t *scratch) const { hs_free_scratch(scratch); }
    };

    std::unique_ptr<hs_database_t, Free> database_;
    std::unique_ptr<hs_scratch_t, Free> scratch_;
};

} // namespace

velmora::LinkCleaningResult RegexPipeline::clean(std::string_view text) const
{
    velmora::LinkCleaningResult result{std::string(text), {}, {}};
    appendCleaned(text, result.cleanedText, &result.removedItems);
    return result;
}

void RegexPipeline::appendCleaned(std::string_view text, std::string &output,
                                  std::vector<velmora::RemovedQueryItem> *removed) const
{
    output.reserve(output.size() + text.size());
    spans_.clear();
    find(text, spans_);
    std::size_t copied = 0;
    for (const Span &span : spans_) {
        output += text.substr(copied, span.begin - copied);
        strip(text.substr(span.begin, span.end - span.begin), output, removed);
        copied = span.end;
    }
    output += text.substr(copied);
}

std::unique_ptr<RegexPipeline> RegexPipeline::re2()
{
    return std::make_unique<Re2Pipeline>();
}

std::unique_ptr<RegexPipeline> RegexPipeline::pcre2Jit()
{
    return std::make_unique<Pcre2Pipeline>(urlPattern);
}

std::unique_ptr<RegexPipeline> RegexPipeline::pcre2JitWithBareHosts()
{
    return std::make_unique<Pcre2Pipeline>(urlOrHostPattern);
}

std::unique_ptr<RegexPipeline> RegexPipeline::hyperscan()
{
    return std::make_unique<HyperscanPipeline>();
}
