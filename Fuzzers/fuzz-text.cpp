#include "Expect.h"
#include "ReferenceCleaning.h"

#include <VelmoraCore/LinkCleaner.h>
#include <VelmoraCore/Query/QueryItemReader.h>
#include <VelmoraCore/QueryItem.h>

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

// Where the fragment of a link begins; its end without one.
std::string_view fragmentOf(std::string_view link)
{
    const std::size_t mark = link.find('#');
    return mark == std::string_view::npos ? std::string_view() : link.substr(mark);
}

bool isSame(const velmora::QueryItem &left, const velmora::QueryItem &right)
{
    const auto meaning = [](std::string_view text) {
        while (text.starts_with("amp;"))
            text.remove_prefix(4);
        return velmora::percentDecoded(text);
    };
    return meaning(left.name) == meaning(right.name) && meaning(left.value.value_or(std::string_view())) ==
                                                            meaning(right.value.value_or(std::string_view()));
}

// Every parameter is removed, kept in its order, or a repetition.
void checkItems(std::string_view before, std::string_view after,
                const std::vector<velmora::RemovedQueryItem> &removed)
{
    velmora::QueryItemReader readerBefore(before);
    velmora::QueryItemReader readerAfter(after);
    velmora::QueryItem kept;
    bool hasKept = readerAfter.next(kept);
    std::size_t count = 0;
    for (velmora::QueryItem item; readerBefore.next(item);) {
        if (hasKept && isSame(item, kept))
            hasKept = readerAfter.next(kept);
        else if (count < removed.size() &&
                 velmora::percentDecoded(item.name).value_or(std::string()) == removed[count].name)
            ++count;
    }
    expect(!hasKept, "what is kept stood there in that order");
    expect(count == removed.size(), "what is removed stood there in that order");
}

void checkEdit(std::string_view link, const velmora::LinkEdit &edit)
{
    const std::string_view before = queryOf(link);
    const std::string_view after = queryOf(edit.replacement);
    // Repeated items are dropped silently, so the count of kept ones is an upper bound.
    expect(countItems(before) >= countItems(after) + edit.removedItems.size(), "no item comes from nowhere");
    checkItems(before, after, edit.removedItems);
    const std::string_view head = link.substr(0, link.find('?'));
    const std::size_t scheme = edit.replacement.find(head);
    expect(scheme == 0 || scheme == std::string_view("http://").size(), "what stands before the query stays");
    expect(fragmentOf(link) == fragmentOf(edit.replacement), "what stands behind the query stays");
    // An escape takes three bytes in place of one.
    expect(after.size() <= before.size() * 3, "a query grows by escapes only");
    expect(edit.replacement.size() <= link.size() + after.size() + 7,
           "a link grows by its scheme and escapes only");
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
    expect(!cleaner().clean(result.cleanedText).didChange(), "cleaning a cleaned text changes nothing more");
    return 0;
}
