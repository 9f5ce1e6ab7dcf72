#pragma once

#include <map>
#include <set>
#include <string>
#include <utility>

namespace velmora {

// The rules that a user of the engine chooses. A plain value: copied freely, compared by content.
//
// All texts are UTF-8. Only the constructor normalises; a field set later is stored as given.
class LinkCleanerConfiguration {
public:
    using Strings = std::set<std::string>;
    using ValueTable = std::map<std::string, Strings>;

    // Hosts are trimmed, lower-cased and freed of leading and trailing dots; names, prefixes, keys and values
    // are trimmed and lower-cased.
    //
    // Two keys of the table that become equal are a programming error: the program ends with the message
    // "Duplicate values for key: '<key>'" on standard error.
    LinkCleanerConfiguration(const Strings &ignoredHosts, const Strings &trackedParameterNames,
                             const Strings &trackedParameterPrefixes,
                             const ValueTable &valueSensitiveTrackedParameters);

    // The built-in tables, and these hosts left alone.
    static LinkCleanerConfiguration withDefaultRules(const Strings &ignoredHosts = {});

    // Hosts whose links are left alone, their sub-domains included. An empty entry matches no link.
    const Strings &ignoredHosts() const { return ignoredHosts_; }

    void setIgnoredHosts(Strings hosts) { ignoredHosts_ = std::move(hosts); }

    // Parameters removed wherever they occur.
    const Strings &trackedParameterNames() const { return trackedParameterNames_; }

    void setTrackedParameterNames(Strings names) { trackedParameterNames_ = std::move(names); }

    // Parameters are removed whose name begins with one of these; an empty prefix removes every parameter.
    const Strings &trackedParameterPrefixes() const { return trackedParameterPrefixes_; }

    void setTrackedParameterPrefixes(Strings prefixes) { trackedParameterPrefixes_ = std::move(prefixes); }

    // Parameters removed only when their value is in the set beside their name.
    const ValueTable &valueSensitiveTrackedParameters() const { return valueSensitiveTrackedParameters_; }

    void setValueSensitiveTrackedParameters(ValueTable table)
    {
        valueSensitiveTrackedParameters_ = std::move(table);
    }

    // The built-in tables; made on first use, never changed. There are no built-in ignored hosts.
    static const Strings &defaultTrackedParameterNames();
    static const Strings &defaultTrackedParameterPrefixes();
    static const ValueTable &defaultValueSensitiveTrackedParameters();

    bool operator==(const LinkCleanerConfiguration &) const = default;

private:
    Strings ignoredHosts_;
    Strings trackedParameterNames_;
    Strings trackedParameterPrefixes_;
    ValueTable valueSensitiveTrackedParameters_;
};

} // namespace velmora
