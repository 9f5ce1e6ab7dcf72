#pragma once

#include <VelmoraCore/LinkCleaner.h>

#include <map>
#include <memory>
#include <mutex>
#include <set>
#include <string>

// Cleaners for sets of ignored hosts. Requests often share their hosts, and preparing a cleaner costs more
// than cleaning a short text. Any thread may ask.
class CleanerCache {
public:
    using Hosts = std::set<std::string>;

    // The hosts are ignored by every cleaner, beside its own.
    explicit CleanerCache(Hosts always)
        : always_(std::move(always))
    {
    }

    std::shared_ptr<const velmora::LinkCleaner> cleanerFor(const Hosts &hosts);

private:
    std::shared_ptr<const velmora::LinkCleaner> known(const Hosts &hosts);

    const Hosts always_;
    std::mutex mutex_;
    std::map<Hosts, std::shared_ptr<const velmora::LinkCleaner>> cleaners_;
};
