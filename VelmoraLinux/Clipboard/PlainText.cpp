#include "PlainText.h"

#include <QStringDecoder>

#include <algorithm>
#include <array>
#include <cctype>
#include <utility>

namespace {

constexpr std::string_view textPlain = "text/plain";

std::string lowered(std::string_view text)
{
    std::string lower(text);
    std::transform(lower.begin(), lower.end(), lower.begin(), [](unsigned char letter) {
        return static_cast<char>(letter < 0x80U ? std::tolower(letter) : letter);
    });
    return lower;
}

// The value of the charset parameter, empty when there is none; nothing when this is not text/plain.
std::optional<std::string> charsetOf(std::string_view type)
{
    std::string lower = lowered(type);
    lower.erase(std::remove_if(lower.begin(), lower.end(), [](char letter) { return letter == ' '; }),
                lower.end());
    if (!lower.starts_with(textPlain))
        return std::nullopt;
    if (lower.size() == textPlain.size())
        return std::string();
    constexpr std::string_view parameter = ";charset=";
    const std::size_t at = lower.find(parameter);
    if (lower[textPlain.size()] != ';')
        return std::nullopt;
    if (at == std::string::npos)
        return std::string();
    std::string charset = lower.substr(at + parameter.size());
    charset.erase(std::min(charset.find(';'), charset.size()));
    charset.erase(std::remove(charset.begin(), charset.end(), '"'), charset.end());
    return charset;
}

bool isUtf8(std::string_view charset)
{
    return charset == "utf-8" || charset == "utf8" || charset == "us-ascii";
}

// The smaller, the better; nothing when the name does not stand for plain text.
std::optional<int> rankOf(std::string_view name)
{
    constexpr std::array<std::string_view, 2> best = {"UTF8_STRING", "text/plain;charset=utf-8"};
    if (const auto *place = std::find(best.begin(), best.end(), name); place != best.end())
        return static_cast<int>(place - best.begin());
    constexpr int afterBest = static_cast<int>(best.size());
    if (const auto charset = charsetOf(name))
        return afterBest + (isUtf8(*charset) ? 0 : charset->empty() ? 1 : 2);
    constexpr std::array<std::string_view, 2> last = {"STRING", "TEXT"};
    if (const auto *place = std::find(last.begin(), last.end(), name); place != last.end())
        return afterBest + 3 + static_cast<int>(place - last.begin());
    return std::nullopt;
}

std::optional<std::string> converted(const std::string &charset, const std::string &bytes)
{
    QStringDecoder decoder(charset.c_str());
    if (!decoder.isValid())
        return std::nullopt;
    const QString text = decoder.decode(QByteArrayView(bytes.data(), static_cast<qsizetype>(bytes.size())));
    return text.toStdString();
}

} // namespace

std::vector<std::string> PlainText::targetsAmong(const std::vector<std::string> &offered)
{
    std::vector<std::pair<int, std::string>> ranked;
    for (const std::string &name : offered) {
        if (const auto rank = rankOf(name))
            ranked.emplace_back(*rank, name);
    }
    std::stable_sort(ranked.begin(), ranked.end(),
                     [](const auto &a, const auto &b) { return a.first < b.first; });
    std::vector<std::string> names;
    names.reserve(ranked.size());
    for (auto &[rank, name] : ranked)
        names.push_back(std::move(name));
    return names;
}

std::optional<std::string> PlainText::decoded(std::string_view type, std::string bytes)
{
    if (type == "UTF8_STRING" || type == "TEXT" || type == "C_STRING")
        return bytes;
    if (type == "STRING")
        return converted("latin1", bytes);
    const auto charset = charsetOf(type);
    if (!charset)
        return std::nullopt;
    if (charset->empty() || isUtf8(*charset))
        return bytes;
    return converted(*charset, bytes);
}

bool PlainText::isSecret(std::string_view markContent)
{
    return markContent.empty() || markContent.starts_with("secret");
}
