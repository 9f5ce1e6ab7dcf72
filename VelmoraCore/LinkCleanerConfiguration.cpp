#include <VelmoraCore/LinkCleanerConfiguration.h>
#include <VelmoraCore/Unicode.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <string_view>

namespace velmora {

namespace {

using Strings = LinkCleanerConfiguration::Strings;
using ValueTable = LinkCleanerConfiguration::ValueTable;

constexpr auto trackers = std::to_array<std::string_view>({
    "_hsenc",
    "_hsmi",
    "__twitter_impression",
    "ascsubtag",
    "awc",
    "campaignid",
    "cjdata",
    "cjevent",
    "clickref",
    "clickref2",
    "creative",
    "dclid",
    "elq",
    "elqak",
    "elqaid",
    "elqat",
    "elqcampaignid",
    "elqtrackid",
    "epik",
    "fbclid",
    "fb_action_ids",
    "fb_action_types",
    "fb_ref",
    "fb_source",
    "feature",
    "gad_adgroupid",
    "gad_campaignid",
    "gad_keywordid",
    "gad_matchtype",
    "gad_source",
    "gbraid",
    "gclid",
    "gclsrc",
    "igsh",
    "igshid",
    "irclickid",
    "li_fat_id",
    "linkcode",
    "mc_cid",
    "mc_eid",
    "mibextid",
    "mkt_tok",
    "msclkid",
    "oly_anon_id",
    "oly_enc_id",
    "rb_clickid",
    "rdt_cid",
    "refid",
    "ref_src",
    "si",
    "srsltid",
    "spm",
    "sv1",
    "sv_affiliate_id",
    "sv_campaign_id",
    "sv_tax1",
    "sv_tax2",
    "sv_tax3",
    "sv_tax4",
    "tgclid",
    "ttclid",
    "twclid",
    "wbraid",
    "wickedid",
    "yclid",
});

std::string normalizedName(std::string_view name)
{
    return lowercased(trimmedWhitespaceAndNewlines(name));
}

std::string normalizedHost(std::string_view host)
{
    std::string name = normalizedName(host);
    const std::size_t first = name.find_first_not_of('.');
    if (first == std::string::npos)
        return {};
    return name.substr(first, name.find_last_not_of('.') + 1 - first);
}

// Entries that differ only in how their characters are composed count as one, as they do in matching.
template<typename Normalize>
Strings normalizedAll(const Strings &entries, Normalize normalize)
{
    Strings result;
    for (const std::string &entry : entries)
        result.insert(canonicalForm(normalize(entry)));
    return result;
}

ValueTable normalizedTable(const ValueTable &table)
{
    ValueTable result;
    for (const auto &[key, values] : table) {
        const auto [place, isNew] =
            result.emplace(canonicalForm(normalizedName(key)), normalizedAll(values, normalizedName));
        if (!isNew) {
            static_cast<void>(std::fprintf(stderr, "Duplicate values for key: '%s'\n", place->first.c_str()));
            std::abort();
        }
    }
    return result;
}

} // namespace

LinkCleanerConfiguration::LinkCleanerConfiguration(const Strings &ignoredHosts,
                                                   const Strings &trackedParameterNames,
                                                   const Strings &trackedParameterPrefixes,
                                                   const ValueTable &valueSensitiveTrackedParameters)
    : ignoredHosts_(normalizedAll(ignoredHosts, normalizedHost))
    , trackedParameterNames_(normalizedAll(trackedParameterNames, normalizedName))
    , trackedParameterPrefixes_(normalizedAll(trackedParameterPrefixes, normalizedName))
    , valueSensitiveTrackedParameters_(normalizedTable(valueSensitiveTrackedParameters))
{
}

LinkCleanerConfiguration LinkCleanerConfiguration::withDefaultRules(const Strings &ignoredHosts)
{
    return {ignoredHosts, defaultTrackedParameterNames(), defaultTrackedParameterPrefixes(),
            defaultValueSensitiveTrackedParameters()};
}

const Strings &LinkCleanerConfiguration::defaultTrackedParameterNames()
{
    static const Strings names(trackers.begin(), trackers.end());
    return names;
}

const Strings &LinkCleanerConfiguration::defaultTrackedParameterPrefixes()
{
    // "amp;utm_" is what a twice-escaped "&amp;utm_..." leaves behind once the query is split at "&".
    static const Strings prefixes = {
        "_utm_", "amp;utm_", "hsa_", "mtm_",   "p.utm_", "piwik_",
        "pk_",   "sa_utm_",  "sc_",  "tyutm_", "utm_",   "vero_",
    };
    return prefixes;
}

const ValueTable &LinkCleanerConfiguration::defaultValueSensitiveTrackedParameters()
{
    static const ValueTable table = {
        {"source", {"ad",         "affiliate", "affiliatewindow", "aw",     "awin",   "bing",      "email",
                    "facebook",   "fb",        "google",          "idealo", "ig",     "instagram", "mail",
                    "newsletter", "paid",      "paid_social",     "reddit", "social", "tiktok",    "twitter",
                    "x"}},
        {"src", {"affiliate", "email", "newsletter", "social"}},
    };
    return table;
}

} // namespace velmora
