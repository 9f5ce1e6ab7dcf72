#pragma once

#include <VelmoraCore/LinkCleanerConfiguration.h>
#include <VelmoraCore/QueryItem.h>
#include <VelmoraCore/Rules/NameTable.h>

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace velmora {

// The host of one link; brought to the form in which hosts are compared when first asked for.
class LinkHost {
public:
    explicit LinkHost(std::string_view written)
        : written_(written)
    {
    }

    const std::string &comparable() const;

private:
    std::string_view written_;
    mutable std::optional<std::string> comparable_;
};

// The decision which parameters of a link are trackers: a configuration and the fixed rules for certain
// hosts, prepared for quick look-up. Immutable after construction.
class TrackingRules {
public:
    explicit TrackingRules(const LinkCleanerConfiguration &configuration);

    // Whether `host` is one of the ignored hosts or within one.
    bool ignores(const LinkHost &host) const { return !ignoredHosts_.empty() && isIgnored(host); }

    // A name behind "&amp;", the separator as HTML writes it, is known with and without the rest of that.
    bool removes(const QueryItem &item, const LinkHost &host) const
    {
        const std::optional<bool> byName = item.plain ? removesPlain(item.name) : std::nullopt;
        return byName ? *byName : removesByAll(item, host);
    }

    // The same for a plain item, of which most names decide alone: trackers everywhere, or known to nobody.
    // Nothing where the value or the host count too.
    std::optional<bool> removesPlain(std::string_view name) const
    {
        const unsigned roles = names_.rolesOf(name);
        if ((roles & tracker) != 0)
            return true;
        if (roles == 0 && !name.starts_with(separatorRest))
            return false;
        return std::nullopt;
    }

private:
    // What splitting a query at "&" leaves of HTML's "&amp;" before a name.
    static constexpr std::string_view separatorRest = "amp;";

    // What a name is known for, as bits.
    enum Role : unsigned { tracker = 1, valueSensitive = 2, hostScoped = 4 };

    // Parameters that are trackers on certain hosts only.
    struct HostScopedRule {
        std::vector<std::string_view> hostSuffixes;
        std::vector<std::string_view> trackedParameterNames;
        std::vector<std::string_view> trackedParameterPrefixes;

        bool names(std::string_view key) const;
        bool appliesTo(const LinkHost &host) const;
    };

    struct ValueSensitiveName {
        std::string name;
        NameTable values;
    };

    static const std::vector<HostScopedRule> &hostScopedRules();

    bool isIgnored(const LinkHost &host) const;
    bool removesByAll(const QueryItem &item, const LinkHost &host) const;
    bool removesNamed(const QueryItem &item, const LinkHost &host) const;
    bool removesBehindSeparator(QueryItem item, const LinkHost &host) const;
    bool removesKey(std::string_view key, const QueryItem &item, const LinkHost &host) const;
    bool removesValue(std::string_view key, const QueryItem &item) const;
    static bool removesOnHost(std::string_view key, const LinkHost &host);

    std::vector<std::string> ignoredHosts_;
    NameTable names_;
    std::vector<ValueSensitiveName> valueSensitive_;
};

} // namespace velmora
