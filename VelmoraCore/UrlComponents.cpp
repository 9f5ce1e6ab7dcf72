#include <VelmoraCore/Text/CharacterClasses.h>
#include <VelmoraCore/UrlComponents.h>

#include <algorithm>

namespace velmora {

namespace {

constexpr std::size_t none = std::string_view::npos;

bool isScheme(std::string_view text)
{
    const auto belongs = [](char c) { return characters::is(c, characters::scheme | characters::dot); };
    return !text.empty() && characters::is(text.front(), characters::letter) &&
           std::all_of(text.begin(), text.end(), belongs);
}

// Cuts what stands before the first of `delimiters` off the front of `rest`.
std::string_view cutBefore(std::string_view &rest, std::string_view delimiters)
{
    const std::string_view piece = rest.substr(0, rest.find_first_of(delimiters));
    rest.remove_prefix(piece.size());
    return piece;
}

bool isPort(std::string_view text)
{
    return std::all_of(text.begin(), text.end(), [](char c) { return characters::is(c, characters::digit); });
}

bool isRegisteredName(std::string_view host)
{
    constexpr std::string_view subDelimiters = "!$&'()*+,;=%~";
    return std::all_of(host.begin(), host.end(), [subDelimiters](char c) {
        return characters::is(c, characters::host | characters::dot | characters::nonAscii) ||
               subDelimiters.find(c) != none;
    });
}

void splitUser(UrlComponents &url, std::string_view &authority)
{
    const std::size_t at = authority.rfind('@');
    if (at == none)
        return;
    const std::string_view user = authority.substr(0, at);
    const std::size_t colon = user.find(':');
    url.user = user.substr(0, colon);
    if (colon != none)
        url.password = user.substr(colon + 1);
    authority.remove_prefix(at + 1);
}

bool splitLiteral(UrlComponents &url, std::string_view authority)
{
    const std::size_t close = authority.find(']');
    if (close == none)
        return false;
    url.host = authority.substr(0, close + 1);
    const std::string_view content = authority.substr(1, close - 1);
    const std::string_view rest = authority.substr(close + 1);
    if (!std::all_of(content.begin(), content.end(),
                     [](char c) { return characters::is(c, characters::literal) || c == '%'; }))
        return false;
    if (rest.empty())
        return true;
    url.port = rest.substr(1);
    return rest.front() == ':' && isPort(*url.port);
}

bool splitAuthority(UrlComponents &url, std::string_view authority)
{
    splitUser(url, authority);
    if (authority.starts_with('['))
        return splitLiteral(url, authority);
    const std::size_t colon = authority.find(':');
    url.host = authority.substr(0, colon);
    if (colon != none)
        url.port = authority.substr(colon + 1);
    return isRegisteredName(*url.host) && isPort(url.port.value_or(std::string_view()));
}

} // namespace

std::optional<UrlComponents> UrlComponents::parse(std::string_view url)
{
    UrlComponents result;
    std::string_view rest = url;
    const std::size_t colon = rest.find_first_of(":/?#[]@");
    if (colon != none && rest[colon] == ':') {
        if (!isScheme(rest.substr(0, colon)))
            return std::nullopt;
        result.scheme = rest.substr(0, colon);
        rest.remove_prefix(colon + 1);
    }
    if (rest.starts_with("//")) {
        rest.remove_prefix(2);
        if (!splitAuthority(result, cutBefore(rest, "/?#")))
            return std::nullopt;
    }
    result.path = cutBefore(rest, "?#");
    if (rest.starts_with('?')) {
        rest.remove_prefix(1);
        result.query = cutBefore(rest, "#");
    }
    if (rest.starts_with('#'))
        result.fragment = rest.substr(1);
    return result;
}

} // namespace velmora
