#pragma once

#include <QString>

// Counts folded into coarse ranges, so that no exact number leaves the machine. The two scales differ on
// purpose, and the open-ended labels name the ranges from 101 and from 11 on.
[[nodiscard]] QString cleanedCountBucket(qint64 count);
[[nodiscard]] QString removedParameterCountBucket(qint64 count);
