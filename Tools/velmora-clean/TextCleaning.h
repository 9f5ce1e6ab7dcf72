#pragma once

#include "Output.h"

#include <VelmoraCore/LinkCleaner.h>

#include <cstddef>
#include <string>
#include <string_view>

// Cleans a text that arrives in pieces. Every cut goes through a blank, which no link contains, so the result
// is that of the whole text. At most about 64 MiB are held: a longer stretch without a single ASCII blank or
// control is passed on as it is.
class TextCleaning {
public:
    // `report` may be null; `name` stands before its lines.
    TextCleaning(const velmora::LinkCleaner &cleaner, Output &output, Output *report, std::string name)
        : cleaner_(cleaner)
        , output_(output)
        , report_(report)
        , name_(std::move(name))
    {
    }

    void add(std::string_view piece);
    // Cleans what is still held.
    void finish();

    static constexpr std::size_t longestWord = std::size_t{64} * 1024 * 1024;

private:
    void clean(std::string_view text);
    void reportEdit(std::string_view before, const velmora::LinkEdit &edit);

    const velmora::LinkCleaner &cleaner_;
    Output &output_;
    Output *report_;
    std::string name_;
    std::string held_;
    std::size_t line_ = 1;
    bool inLongWord_ = false;
};
