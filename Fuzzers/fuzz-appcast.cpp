#include "Expect.h"

#include <VelmoraLinux/Updates/AppcastReader.h>

#include <cstdint>

// Update feeds, which come from the network and are read before anything about them is verified.

namespace {

constexpr qsizetype longestText = AppcastReader::maximumBytes;

void check(const AppcastItem &item, const QByteArray &feed)
{
    for (const QString &text :
         {item.version, item.shownVersion, item.notes, item.channel, item.minimumSystem})
        expect(text.size() <= longestText, "no text is longer than a feed may be");
    // An entity of XML's own takes four bytes at least and gives one character; so nothing grows.
    expect(item.version.size() + item.shownVersion.size() <= feed.size(), "a feed is not multiplied");
    for (const AppcastEnclosure &enclosure : item.enclosures)
        expect(enclosure.length >= 0, "a length is not negative");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const QByteArray feed(reinterpret_cast<const char *>(data), static_cast<qsizetype>(size));
    QString problem;
    const auto appcast = AppcastReader::read(feed, &problem);
    expect(appcast.has_value() == problem.isEmpty(), "a refused feed has a reason");
    expect(AppcastReader::read(feed) == appcast, "the same feed says the same");
    if (appcast) {
        for (const AppcastItem &item : *appcast)
            check(item, feed);
    }
    return 0;
}
