#include <VelmoraCore/Detection/Schemes.h>
#include <VelmoraCore/Text/CharacterClasses.h>

#include <algorithm>
#include <array>

namespace velmora {

namespace {

// Schemes without slashes. What follows them is an address of their own kind or a whole link, which they take
// up with all inside: changing it would change what the program behind the scheme is told.
constexpr auto schemesWithoutSlashes = std::to_array<std::string_view>({
    // People and calls.
    "mailto",
    "tel",
    "sms",
    "smsto",
    "mms",
    "callto",
    "facetime",
    "facetime-audio",
    "sip",
    "sips",
    "skype",
    "xmpp",
    "acct",
    // Readers and calendars get the link behind the scheme.
    "news",
    "feed",
    "pcast",
    "webcal",
    // Payments, places, names.
    "bitcoin",
    "bitcoincash",
    "ethereum",
    "litecoin",
    "lightning",
    "monero",
    "geo",
    "magnet",
    "urn",
    "otpauth",
    // Browsers and programs.
    "about",
    "blob",
    "data",
    "filesystem",
    "intent",
    "itms-services",
    "jar",
    "javascript",
    "vbscript",
    "view-source",
});

} // namespace

bool isHttp(std::string_view scheme)
{
    return characters::equalsIgnoringCase(scheme, "http") || characters::equalsIgnoringCase(scheme, "https");
}

// The length of the "http" or "https" at the end of the text; all of it if there is none.
std::size_t httpSuffix(std::string_view text)
{
    for (const std::string_view scheme : {std::string_view("https"), std::string_view("http")}) {
        if (text.size() >= scheme.size() &&
            characters::equalsIgnoringCase(text.substr(text.size() - scheme.size()), scheme))
            return scheme.size();
    }
    return text.size();
}

bool isSchemeWithoutSlashes(std::string_view word)
{
    return std::any_of(
        schemesWithoutSlashes.begin(), schemesWithoutSlashes.end(),
        [word](std::string_view scheme) { return characters::equalsIgnoringCase(word, scheme); });
}

} // namespace velmora
