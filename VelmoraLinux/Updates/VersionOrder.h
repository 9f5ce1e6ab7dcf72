#pragma once

#include <QStringView>

#include <compare>

// The order of two version numbers such as "1.10", "1.0b2" or "2.0-rc1".
//
// The part after the first '-' is ignored. Runs of digits compare as numbers of any length, runs of letters by code
// point, a missing ".0" is added, a number is newer than letters: 1.0b1 < 1.0 = 1.0.0 < 1.0.1 < 1.9 < 1.10.
[[nodiscard]] std::weak_ordering compareVersions(QStringView left, QStringView right);
