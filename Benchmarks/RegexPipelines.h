#pragma once

#include <VelmoraCore/LinkCleaningResult.h>

#include <memory>
#include <string_view>
#include <vector>

// The usual way to clean links: find URLs with a regular expression, then strip their queries. The comparison
// for our own speed; they differ in the engine that finds.
//
// The result is what a caller gets from us, the cleaned text and the removed parameters, by the same tables,
// but without what makes ours careful: nothing is decoded or collapsed, no host is looked at, punctuation
// behind a link is taken in.
class RegexPipeline {
public:
    virtual ~RegexPipeline() = default;

    velmora::LinkCleaningResult clean(std::string_view text) const;

    // Appends the cleaned text to `output`, and the removed parameters to `removed` unless that is null.
    void appendCleaned(std::string_view text, std::string &output,
                       std::vector<velmora::RemovedQueryItem> *removed = nullptr) const;

    static std::unique_ptr<RegexPipeline> re2();
    static std::unique_ptr<RegexPipeline> pcre2Jit();
    static std::unique_ptr<RegexPipeline> hyperscan();
    // Finds hosts without a scheme, as we do, by a few top-level domains.
    static std::unique_ptr<RegexPipeline> pcre2JitWithBareHosts();

protected:
    struct Span {
        std::size_t begin;
        std::size_t end;
    };

    // Appends the URLs of the text to `spans`.
    virtual void find(std::string_view text, std::vector<Span> &spans) const = 0;

private:
    mutable std::vector<Span> spans_; // Kept for the memory it has.
};
