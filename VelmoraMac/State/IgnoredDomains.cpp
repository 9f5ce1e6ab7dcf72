#include "IgnoredDomains.h"

#include <VelmoraCore/Unicode.h>

#include <vector>

namespace {

bool isLineBreak(QChar c)
{
    return (c >= u'\n' && c <= u'\r') || c == u'\x85' || c == u'\u2028' || c == u'\u2029';
}

// The trimmed lines that are not empty.
std::vector<std::string> domainLines(const QString &text)
{
    std::vector<std::string> lines;
    qsizetype begin = 0;
    for (qsizetype i = 0; i <= text.size(); ++i) {
        if (i < text.size() && !isLineBreak(text[i]))
            continue;
        const std::string line = text.sliced(begin, i - begin).toStdString();
        if (const auto trimmed = velmora::trimmedWhitespace(line); !trimmed.empty())
            lines.emplace_back(trimmed);
        begin = i + 1;
    }
    return lines;
}

} // namespace

std::set<std::string> IgnoredDomains::hosts(const QString &text)
{
    std::set<std::string> hosts;
    for (const std::string &line : domainLines(text))
        hosts.insert(velmora::lowercased(line));
    return hosts;
}

qsizetype IgnoredDomains::lineCount(const QString &text)
{
    return static_cast<qsizetype>(domainLines(text).size());
}

QString IgnoredDomains::appending(const QString &text, const QString &host)
{
    const bool isBlank = velmora::trimmedWhitespace(text.toStdString()).empty();
    return isBlank ? text + host : text + u'\n' + host;
}
