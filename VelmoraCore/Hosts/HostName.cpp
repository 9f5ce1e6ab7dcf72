#include <VelmoraCore/Hosts/HostName.h>
#include <VelmoraCore/QueryItem.h>
#include <VelmoraCore/Text/CharacterClasses.h>
#include <VelmoraCore/Unicode.h>

#include <unicode/uidna.h>

#include <algorithm>
#include <array>
#include <memory>

namespace velmora {

namespace {

// Longer ones are no domain names, whatever their spelling: those have at most 253 characters in ASCII, at
// least half as many as bytes in UTF-8.
constexpr std::size_t longestInternationalName = 512;

struct CloseIdna {
    void operator()(UIDNA *idna) const { uidna_close(idna); }
};

const UIDNA *domainNameRules()
{
    static const std::unique_ptr<UIDNA, CloseIdna> rules = [] {
        UErrorCode error = U_ZERO_ERROR;
        return std::unique_ptr<UIDNA, CloseIdna>(uidna_openUTS46(
            UIDNA_CHECK_BIDI | UIDNA_CHECK_CONTEXTJ | UIDNA_NONTRANSITIONAL_TO_ASCII, &error));
    }();
    return rules.get();
}

bool isAscii(std::string_view text)
{
    return std::none_of(text.begin(), text.end(),
                        [](char c) { return characters::is(c, characters::nonAscii); });
}

std::string asciiSpelling(std::string_view name)
{
    if (name.size() <= longestInternationalName && domainNameRules() != nullptr) {
        std::array<char, longestInternationalName * 2> spelling{};
        UIDNAInfo info = UIDNA_INFO_INITIALIZER;
        UErrorCode error = U_ZERO_ERROR;
        const int32_t length =
            uidna_nameToASCII_UTF8(domainNameRules(), name.data(), static_cast<int32_t>(name.size()),
                                   spelling.data(), static_cast<int32_t>(spelling.size()), &info, &error);
        if (U_SUCCESS(error) && info.errors == 0)
            return {spelling.data(), static_cast<std::size_t>(length)};
    }
    return canonicalForm(lowercased(name));
}

std::string_view withoutOuterDots(std::string_view host)
{
    const std::size_t first = host.find_first_not_of('.');
    return first == std::string_view::npos ? std::string_view()
                                           : host.substr(first, host.find_last_not_of('.') + 1 - first);
}

} // namespace

std::string reportedHost(std::string_view host)
{
    if (host.starts_with('['))
        return std::string(host.substr(1, host.find(']') - 1));
    std::string decoded;
    if (host.find('%') != std::string_view::npos) {
        decoded = percentDecoded(host).value_or(std::string(host));
        host = decoded;
    }
    return isAscii(host) ? std::string(host) : asciiSpelling(host);
}

std::string comparableHost(std::string_view host)
{
    // Dots go before the ASCII spelling is sought, which has no empty labels, and after escapes are decoded.
    const std::string name = reportedHost(withoutOuterDots(trimmedWhitespaceAndNewlines(host)));
    std::string result(withoutOuterDots(name));
    std::transform(result.begin(), result.end(), result.begin(), characters::lower);
    return result;
}

bool isWithinDomain(std::string_view host, std::string_view domain)
{
    if (domain.empty() || !host.ends_with(domain))
        return false;
    return host.size() == domain.size() || host[host.size() - domain.size() - 1] == '.';
}

} // namespace velmora
