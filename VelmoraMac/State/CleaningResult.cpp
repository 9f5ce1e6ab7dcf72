#include "CleaningResult.h"

namespace {

constexpr qsizetype longestName = 60;

} // namespace

void shortenNames(QStringList &names)
{
    if (names.size() > mostParameterNames)
        names.resize(mostParameterNames);
    for (QString &name : names) {
        if (name.size() > longestName)
            name = name.first(longestName - 1) + QChar(0x2026);
    }
}
