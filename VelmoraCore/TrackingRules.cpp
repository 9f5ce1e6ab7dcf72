#include <VelmoraCore/CharacterClasses.h>
#include <VelmoraCore/HostName.h>
#include <VelmoraCore/TrackingRules.h>
#include <VelmoraCore/Unicode.h>

#include <algorithm>
#include <array>
#include <span>
#include <utility>

namespace velmora {

namespace {

// The spelling of names and values under which the rules know them.
std::string ruleSpelling(std::string_view text)
{
    return canonicalForm(lowercased(trimmedWhitespaceAndNewlines(text)));
}

std::vector<std::string> canonicalForms(const LinkCleanerConfiguration::Strings &texts)
{
    std::vector<std::string> forms;
    for (const std::string &text : texts)
        forms.push_back(canonicalForm(text));
    return forms;
}

// The name in lower case when it is plain text that needs nothing else; `buffer` holds it.
std::optional<std::string_view> plainKey(std::string_view name, std::span<char> buffer)
{
    if (name.size() > buffer.size())
        return std::nullopt;
    for (std::size_t i = 0; i < name.size(); ++i) {
        const char c = name[i];
        if (characters::is(c, characters::coded | characters::blank))
            return std::nullopt;
        buffer[i] = characters::lower(c);
    }
    return std::string_view(buffer.data(), name.size());
}

} // namespace

const std::string &LinkHost::comparable() const
{
    if (!comparable_)
        comparable_ = comparableHost(written_);
    return *comparable_;
}

TrackingRules::TrackingRules(const LinkCleanerConfiguration &configuration)
    : prefixes_(canonicalForms(configuration.trackedParameterPrefixes()))
{
    for (const std::string &host : configuration.ignoredHosts())
        ignoredHosts_.push_back(comparableHost(host));
    for (const std::string &name : configuration.trackedParameterNames())
        names_.add(canonicalForm(name), tracker);
    for (const auto &[key, values] : configuration.valueSensitiveTrackedParameters()) {
        names_.add(canonicalForm(key), valueSensitive);
        ValueSensitiveName &entry = valueSensitive_.emplace_back(ValueSensitiveName{canonicalForm(key), {}});
        for (const std::string &value : values)
            entry.values.add(canonicalForm(value), tracker);
    }
    std::vector<std::string> hostScopedPrefixes;
    for (const HostScopedRule &rule : hostScopedRules()) {
        for (const std::string_view name : rule.trackedParameterNames)
            names_.add(name, hostScoped);
        hostScopedPrefixes.insert(hostScopedPrefixes.end(), rule.trackedParameterPrefixes.begin(),
                                  rule.trackedParameterPrefixes.end());
    }
    hostScopedPrefixes_ = PrefixTable(std::move(hostScopedPrefixes));
}

bool TrackingRules::ignores(const LinkHost &host) const
{
    return std::any_of(ignoredHosts_.begin(), ignoredHosts_.end(), [&host](const std::string &ignored) {
        return isWithinDomain(host.comparable(), ignored);
    });
}

bool TrackingRules::removes(const QueryItem &item, const LinkHost &host) const
{
    constexpr std::size_t usualLength = 64;
    // NOLINTNEXTLINE(cppcoreguidelines-pro-type-member-init): written before it is read.
    std::array<char, usualLength> buffer;
    if (const auto key = plainKey(item.name, buffer))
        return removesKey(*key, item, host);
    return removesKey(ruleSpelling(percentDecoded(item.name).value_or(std::string())), item, host);
}

bool TrackingRules::removesKey(std::string_view key, const QueryItem &item, const LinkHost &host) const
{
    const unsigned roles = names_.rolesOf(key);
    if ((roles & tracker) != 0 || prefixes_.matches(key))
        return true;
    if ((roles & valueSensitive) != 0 && removesValue(key, item))
        return true;
    return ((roles & hostScoped) != 0 || hostScopedPrefixes_.matches(key)) && removesOnHost(key, host);
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
        return entry.name == key && entry.values.rolesOf(spelling) != 0;
    });
}

bool TrackingRules::removesOnHost(std::string_view key, const LinkHost &host)
{
    return std::any_of(hostScopedRules().begin(), hostScopedRules().end(),
                       [&](const HostScopedRule &rule) { return rule.names(key) && rule.appliesTo(host); });
}

bool TrackingRules::HostScopedRule::names(std::string_view key) const
{
    const auto begins = [key](std::string_view prefix) { return hasCanonicalPrefix(key, prefix); };
    return std::find(trackedParameterNames.begin(), trackedParameterNames.end(), key) !=
               trackedParameterNames.end() ||
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
