#include "Expect.h"
#include "ReferenceCleaning.h"

#include <VelmoraCore/LinkCleaner.h>
#include <VelmoraCore/QueryItem.h>

#include <algorithm>
#include <cstdint>
#include <string>
#include <string_view>

// Cleaning of texts.

namespace {

using Configuration = velmora::LinkCleanerConfiguration;

const velmora::LinkCleaner &cleaner()
{
    static const velmora::LinkCleaner instance(Configuration::withDefaultRules({"ignored.com", "bücher.de"}));
    return instance;
}

// What the edits leave alone, with the replacements put in.
std::string applied(std::string_view text, const std::vector<velmora::LinkEdit> &edits)
{
    std::string result;
    std::size_t copied = 0;
    for (const velmora::LinkEdit &edit : edits) {
        expect(edit.offset >= copied && edit.offset + edit.length <= text.size(),
               "edits stand in order in the text");
        expect(!edit.removedItems.empty(), "an edit removes something");
        result += text.substr(copied, edit.offset - copied);
        result += edit.replacement;
        copied = edit.offset + edit.length;
    }
    result += text.substr(copied);
    return result;
}

std::size_t countItems(std::string_view query)
{
    std::size_t count = 0;
    velmora::QueryItemReader reader(query);
    for (velmora::QueryItem item; reader.next(item);)
        ++count;
    return count;
}

std::string_view queryOf(std::string_view link)
{
    link = link.substr(0, link.find('#'));
    const std::size_t mark = link.find('?');
    return mark == std::string_view::npos ? std::string_view() : link.substr(mark + 1);
}

void checkEdit(std::string_view link, const velmora::LinkEdit &edit)
{
    const std::string_view before = queryOf(link);
    const std::string_view after = queryOf(edit.replacement);
    // Repeated items are dropped silently, so the count of kept ones is an upper bound.
    expect(countItems(before) >= countItems(after) + edit.removedItems.size(), "no item comes from nowhere");
    const std::size_t scheme = edit.replacement.find(link.substr(0, link.find('?')));
    expect(scheme == 0 || scheme == std::string_view("http://").size(), "what stands before the query stays");
    // An escape takes three bytes in place of one.
    expect(after.size() <= before.size() * 3, "a query grows by escapes only");
    expect(edit.replacement.size() <= link.size() + after.size() + 7,
           "a link grows by its scheme and escapes only");
}

// A bracket that opened before the query and closes behind the link makes the rest of the text part of a link
// once the query between them is gone: "e.com/(?si=1)?si=2" is two cleanings.
bool mayJoin(std::string_view text)
{
    const auto isBracketOrNonAscii = [](char c) {
        return std::string_view("()[]{}").find(c) != std::string_view::npos ||
               static_cast<unsigned char>(c) >= 0x80;
    };
    return std::any_of(text.begin(), text.end(), isBracketOrNonAscii);
}

// A kept parameter that comes to stand at the end of its link loses the punctuation there when the link is
// found again:
// "?si!&si=1" becomes "?si!", and in that text the name is "si".
bool endsInPunctuation(const velmora::LinkEdit &edit)
{
    return std::string_view("!\"',.:;?").find(edit.replacement.back()) != std::string_view::npos;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const std::string_view text(reinterpret_cast<const char *>(data), size);
    const std::vector<velmora::LinkEdit> edits = cleaner().edits(text);
    expect(edits == referenceEdits(cleaner(), text),
           "the quick search finds what detecting everything finds");

    const velmora::LinkCleaningResult result = cleaner().clean(text);
    expect(result.originalText == text, "the original text is the text");
    expect(result.cleanedText == applied(text, edits), "bytes outside links stay");
    expect(result.didChange() == !edits.empty(), "a text changes exactly when something is removed");
    std::vector<velmora::RemovedQueryItem> removed;
    for (const velmora::LinkEdit &edit : edits) {
        checkEdit(text.substr(edit.offset, edit.length), edit);
        removed.insert(removed.end(), edit.removedItems.begin(), edit.removedItems.end());
    }
    expect(removed == result.removedItems, "the removed items are those of the edits, in order");
    if (!mayJoin(text) && std::none_of(edits.begin(), edits.end(), endsInPunctuation))
        expect(!cleaner().clean(result.cleanedText).didChange(),
               "cleaning a cleaned text changes nothing more");
    return 0;
}
