#pragma once

#include <string>
#include <string_view>

namespace velmora {

// A host as URLs report it: escapes decoded, a literal without its brackets, an internationalised name in its
// ASCII spelling. ASCII names keep their case; a trailing dot stays. A name that has no ASCII spelling comes
// back in lower case.
std::string reportedHost(std::string_view host);

// The one form in which hosts are compared: as reported, in lower case, without blanks and dots at its ends.
std::string comparableHost(std::string_view host);

// Whether `host` is `domain` or one of its sub-domains. Both in comparable form; no host lies in "".
bool isWithinDomain(std::string_view host, std::string_view domain);

} // namespace velmora
