#include <VelmoraCore/Hosts/HostName.h>
#include <VelmoraCore/Rules/TrackingRules.h>
#include <VelmoraCore/Text/ByteSearch.h>
#include <VelmoraCore/Text/CharacterClasses.h>
#include <VelmoraCore/Text/CharacterProperties.h>
#include <VelmoraCore/Text/Utf8.h>
#include <VelmoraCore/Unicode.h>

#include <algorithm>
#include <utility>

namespace velmora {

namespace {

// The spelling of names and values under which the rules know them.
std::string ruleSpelling(std::string_view text)
{
    return canonicalForm(lowercased(trimmedWhitespaceAndNewlines(text)));
}

bool hasCapitals(std::string_view text)
{
    return std::any_of(text.begin(), text.end(), [](char c) { return c >= 'A' && c <= 'Z'; });
}

// Whether the rules' spelling of a text begins outside ASCII for certain: the text begins with a letter or mark there,
// and with none of the two that are an "i" and a "k" in lower case.
bool beginsOutsideAscii(std::string_view text)
{
    constexpr char32_t dottedCapitalI = 0x130;
    constexpr char32_t kelvinSign = 0x212A;
    if (text.empty() || !characters::is(text.front(), characters::nonAscii))
        return false;
    const char32_t first = utf8::decode(text, 0).value;
    const CharacterCategory category = propertiesOf(first).category;
    return (category == CharacterCategory::letter || category == CharacterCategory::mark) &&
           first != dottedCapitalI && first != kelvinSign;
}

// The entries as the tables take them. Names and values lose their capitals before they are looked up, so an
// entry with capitals, which only a field set later can hold, matches nothing.
std::vector<std::string> tableEntries(const LinkCleanerConfiguration::Strings &texts)
{
    std::vector<std::string> entries;
    for (const std::string &text : texts) {
        if (!hasCapitals(text))
            entries.push_back(canonicalForm(text));
    }
    return entries;
}

} // namespace

const std::string &LinkHost::comparable() const
{
    if (!comparable_)
        comparable_ = comparableHost(written_);
    return *comparable_;
}

TrackingRules::TrackingRules(const LinkCleanerConfiguration &configuration)
{
    for (const std::string &host : configuration.ignoredHosts())
        ignoredHosts_.push_back(comparableHost(host));
    for (const std::string &name : tableEntries(configuration.trackedParameterNames()))
        names_.add(name, tracker);
    for (const std::string &prefix : tableEntries(configuration.trackedParameterPrefixes()))
        names_.addPrefix(prefix, tracker);
    for (const auto &[key, values] : configuration.valueSensitiveTrackedParameters()) {
        if (hasCapitals(key))
            continue;
        names_.add(canonicalForm(key), valueSensitive);
        ValueSensitiveName &entry = valueSensitive_.emplace_back(ValueSensitiveName{canonicalForm(key), {}});
        for (const std::string &value : tableEntries(values))
            entry.values.add(value, tracker);
    }
    for (const HostScopedRule &rule : hostScopedRules()) {
        for (const std::string_view name : rule.trackedParameterNames)
            names_.add(name, hostScoped);
        for (const std::string_view prefix : rule.trackedParameterPrefixes)
            names_.addPrefix(prefix, hostScoped);
    }
}

bool TrackingRules::isIgnored(const LinkHost &host) const
{
    return std::any_of(ignoredHosts_.begin(), ignoredHosts_.end(), [&host](const std::string &ignored) {
        return isWithinDomain(host.comparable(), ignored);
    });
}

bool TrackingRules::removesByAll(const QueryItem &item, const LinkHost &host) const
{
    return removesNamed(item, host) ||
           (item.name.starts_with(separatorRest) && removesBehindSeparator(item, host));
}

bool TrackingRules::removesBehindSeparator(QueryItem item, const LinkHost &host) const
{
    while (item.name.starts_with(separatorRest))
        item.name.remove_prefix(separatorRest.size());
    return removesNamed(item, host);
}

bool TrackingRules::removesNamed(const QueryItem &item, const LinkHost &host) const
{
    if (item.plain || findCoded(item.name, 0) == item.name.size())
        return removesKey(item.name, item, host);
    if (beginsOutsideAscii(item.name) && !names_.mayBeginOutsideAscii())
        return false;
    return removesKey(ruleSpelling(percentDecoded(item.name).value_or(std::string())), item, host);
}

bool TrackingRules::removesKey(std::string_view key, const QueryItem &item, const LinkHost &host) const
{
    const unsigned roles = names_.rolesOf(key);
    return (roles & tracker) != 0 || ((roles & valueSensitive) != 0 && removesValue(key, item)) ||
           ((roles & hostScoped) != 0 && removesOnHost(key, host));
}

bool TrackingRules::removesValue(std::string_view key, const QueryItem &item) const
{
    if (!item.value)
        return false;
    const std::optional<std::string> value = percentDecoded(*item.value);
    if (!value)
        return false;
    const std::string spelling = ruleSpelling(*value);
    return std::any_of(valueSensitive_.begin(), valueSensitive_.end(), [&](const ValueSensitiveName &entry) {
        return characters::equalsIgnoringCase(key, entry.name) && entry.values.rolesOf(spelling) != 0;
    });
}

bool TrackingRules::removesOnHost(std::string_view key, const LinkHost &host)
{
    return std::any_of(hostScopedRules().begin(), hostScopedRules().end(),
                       [&](const HostScopedRule &rule) { return rule.names(key) && rule.appliesTo(host); });
}

bool TrackingRules::HostScopedRule::names(std::string_view key) const
{
    const auto isKey = [key](std::string_view name) { return characters::equalsIgnoringCase(key, name); };
    const auto begins = [key](std::string_view prefix) { return beginsWith(key, prefix); };
    return std::any_of(trackedParameterNames.begin(), trackedParameterNames.end(), isKey) ||
           std::any_of(trackedParameterPrefixes.begin(), trackedParameterPrefixes.end(), begins);
}

bool TrackingRules::HostScopedRule::appliesTo(const LinkHost &host) const
{
    return std::any_of(hostSuffixes.begin(), hostSuffixes.end(), [&host](std::string_view suffix) {
        return isWithinDomain(host.comparable(), suffix);
    });
}

const std::vector<TrackingRules::HostScopedRule> &TrackingRules::hostScopedRules()
{
    static const std::vector<HostScopedRule> rules = {
        {{"amazon.com", "amazon.de", "amazon.co.uk", "amazon.fr", "amazon.it", "amazon.es"},
         {"ascsubtag", "camp", "creative", "creativeasin", "linkcode", "ref", "refrid", "social_share",
          "tag"},
         {"pd_rd_", "pf_rd_"}},
    };
    return rules;
}

} // namespace velmora
