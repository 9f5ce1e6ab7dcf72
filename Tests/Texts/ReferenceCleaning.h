#pragma once

#include <VelmoraCore/LinkCleaner.h>

#include <string_view>
#include <vector>

// The reference for `LinkCleaner::edits`: detects every link, then cleans each URL.
std::vector<velmora::LinkEdit> referenceEdits(const velmora::LinkCleaner &cleaner, std::string_view text);
