#include "Expect.h"

#include <VelmoraLinux/Clipboard/PlainText.h>

#include <fuzzer/FuzzedDataProvider.h>

#include <algorithm>
#include <cstdint>

// What the owner of a copy says of it: the names of its forms, the type of its text, the text itself, and its mark.

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    FuzzedDataProvider given(data, size);
    std::vector<std::string> offered;
    for (int i = given.ConsumeIntegralInRange(0, 300); i > 0 && given.remaining_bytes() > 0; --i)
        offered.push_back(given.ConsumeRandomLengthString(60));
    offered.push_back(given.ConsumeBool() ? "UTF8_STRING"
                                          : "text/plain;charset=" + given.ConsumeRandomLengthString(12));
    const std::vector<std::string> targets = PlainText::targetsAmong(offered);
    for (const std::string &target : targets)
        expect(std::find(offered.begin(), offered.end(), target) != offered.end(),
               "only what is offered is asked for");

    const std::string mark = given.ConsumeRandomLengthString(10);
    expect(!mark.empty() || PlainText::isSecret(mark), "a mark without content means secrecy");

    const std::string type = given.ConsumeBool() && !targets.empty() ? targets.front() : offered.back();
    const std::string text = given.ConsumeRemainingBytesAsString();
    const auto decoded = PlainText::decoded(type, text);
    if (type == "UTF8_STRING")
        expect(decoded == text, "UTF-8 stays what it is");
    // No encoding that is known here gives more than four bytes of UTF-8 for one of its own.
    expect(!decoded || decoded->size() <= 4 * text.size() + 4, "a text is not multiplied");
    return 0;
}
