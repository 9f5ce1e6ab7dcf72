#include "CleanerCache.h"

namespace {

constexpr std::size_t manyCleaners = 256;

using Cleaner = std::shared_ptr<const velmora::LinkCleaner>;

Cleaner makeCleaner(const CleanerCache::Hosts &hosts)
{
    return std::make_shared<const velmora::LinkCleaner>(
        velmora::LinkCleanerConfiguration::withDefaultRules(hosts));
}

} // namespace

Cleaner CleanerCache::cleanerFor(const Hosts &hosts)
{
    if (Cleaner cleaner = known(hosts))
        return cleaner;
    Hosts all = always_;
    all.insert(hosts.begin(), hosts.end());
    // Made without the lock: others need not wait, and the same one made twice does no harm.
    Cleaner cleaner = makeCleaner(all);
    const std::lock_guard lock(mutex_);
    if (cleaners_.size() >= manyCleaners)
        cleaners_.clear();
    return cleaners_.emplace(hosts, std::move(cleaner)).first->second;
}

Cleaner CleanerCache::known(const Hosts &hosts)
{
    const std::lock_guard lock(mutex_);
    const auto place = cleaners_.find(hosts);
    return place == cleaners_.end() ? nullptr : place->second;
}
