#pragma once

#include <VelmoraCore/LinkCleaner.h>

#include <string_view>
#include <vector>

// What `LinkCleaner::edits` has to give, found the long way: detect every link, then clean each URL.
std::vector<velmora::LinkEdit> referenceEdits(const velmora::LinkCleaner &cleaner, std::string_view text);
