#pragma once

#include <QStringView>

#include <compare>

// The order of two version numbers such as "1.10", "1.0b2" or "2.0-rc1".
//
// What follows the first '-' does not count. Runs of digits compare as numbers of any length, runs of letters
// by code, a missing ".0" is supplied, a number beats letters: 1.0b1 < 1.0 = 1.0.0 < 1.0.1 < 1.9 < 1.10.
[[nodiscard]] std::weak_ordering compareVersions(QStringView left, QStringView right);
