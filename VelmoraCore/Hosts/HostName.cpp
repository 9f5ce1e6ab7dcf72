#include <VelmoraCore/Hosts/HostName.h>
#include <VelmoraCore/Hosts/InternationalName.h>
#include <VelmoraCore/QueryItem.h>
#include <VelmoraCore/Text/CharacterClasses.h>
#include <VelmoraCore/Unicode.h>

#include <algorithm>
#include <optional>

namespace velmora {

namespace {

// Longer ones are no domain names, whatever their spelling: those have at most 253 characters in ASCII, at
// least half as many as bytes in UTF-8.
constexpr std::size_t longestInternationalName = 512;

bool isAscii(std::string_view text)
{
    return std::none_of(text.begin(), text.end(),
                        [](char c) { return characters::is(c, characters::nonAscii); });
}

std::string asciiSpelling(std::string_view name)
{
    const auto spelling = name.size() <= longestInternationalName ? asciiName(name) : std::nullopt;
    return spelling ? *spelling : canonicalForm(lowercased(name));
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
