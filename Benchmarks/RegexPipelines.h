#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

// The usual way to clean links: find URLs with a regular expression, then strip their queries. The comparison
// for our own speed; the three differ in the engine that finds.
class RegexPipeline {
public:
    virtual ~RegexPipeline() = default;

    // The cleaned text; the names of what was removed are appended.
    std::string clean(std::string_view text, std::vector<std::string> &removed) const;

    static std::unique_ptr<RegexPipeline> re2();
    static std::unique_ptr<RegexPipeline> pcre2Jit();
    static std::unique_ptr<RegexPipeline> hyperscan();

protected:
    struct Span {
        std::size_t begin;
        std::size_t end;
    };

    virtual std::vector<Span> find(std::string_view text) const = 0;
};
