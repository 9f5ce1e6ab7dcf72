#include "Corpora.h"

#include "Numbers.h"

#include <array>
#include <string_view>

namespace corpora {

namespace {

constexpr std::array<std::string_view, 32> words = {
    "the",   "river", "of",     "morning", "and", "a",      "letter",  "to",    "window", "was", "bright",
    "when",  "they",  "walked", "over",    "old", "bridge", "with",    "their", "dog",    "in",  "silence",
    "until", "rain",  "began",  "again",   "he",  "said",   "nothing", "more",  "about",  "it"};

constexpr std::array<std::string_view, 6> hosts = {"www.example.com",     "shop.example.org",
                                                   "news.example.net",    "www.amazon.de",
                                                   "video.example.co.uk", "example.io"};

constexpr std::array<std::string_view, 8> kept = {"id=4711", "q=blue+shoes", "page=2",      "v=dQw4w9WgXcQ",
                                                  "lang=en", "sort=price",   "ref_id=a1b2", "t=42s"};

constexpr std::array<std::string_view, 8> tracked = {
    "utm_source=newsletter", "utm_medium=email", "utm_campaign=spring_sale", "fbclid=IwAR0abcDEF123456789",
    "gclid=EAIaIQobChMI",    "si=AbCdEfGh",      "mc_eid=0123456789",        "igshid=MzRlODBiNWFlZA"};

// Twelve names that come with values of everyday lengths.
constexpr std::array<std::string_view, 12> trackerNames = {
    "utm_source", "utm_medium", "utm_campaign", "utm_term", "utm_content", "fbclid",
    "gclid",      "msclkid",    "mc_eid",       "igshid",   "yclid",       "si"};

constexpr std::array<std::string_view, 6> trackerValues = {"newsletter", "email",    "spring_sale",
                                                           "Cj0KCQjw",   "a1b2c3d4", "social"};

void appendSentence(std::string &text, Numbers &numbers)
{
    const std::size_t length = 5 + numbers.below(12);
    for (std::size_t i = 0; i < length; ++i) {
        text += numbers.pick(words);
        text += i + 1 == length ? "" : " ";
    }
    text += numbers.below(12) == 0 ? "? " : ". ";
    if (numbers.below(5) == 0)
        text.back() = '\n';
}

void appendLink(std::string &text, Numbers &numbers)
{
    text += "https://";
    text += numbers.pick(hosts);
    text += "/path/to/article-";
    text += std::to_string(numbers.below(100000));
    char separator = '?';
    const auto append = [&](std::string_view item) {
        text += separator;
        text += item;
        separator = '&';
    };
    append(numbers.pick(kept));
    append(numbers.pick(tracked));
    append(numbers.pick(tracked));
}

} // namespace

std::string prose(std::size_t size)
{
    return proseWithLinks(size, size * 4);
}

std::string proseWithLinks(std::size_t size, std::size_t distance)
{
    Numbers numbers(1);
    std::string text;
    text.reserve(size + 512);
    std::size_t next = distance / 2;
    while (text.size() < size) {
        appendSentence(text, numbers);
        if (text.size() >= next) {
            appendLink(text, numbers);
            text += ' ';
            next += distance;
        }
    }
    return text;
}

std::string linkLines(std::size_t count)
{
    Numbers numbers(1);
    std::string text;
    for (std::size_t i = 0; i < count; ++i) {
        appendLink(text, numbers);
        text += '\n';
    }
    return text;
}

std::string denseLinks(std::size_t count)
{
    Numbers numbers(1);
    std::string text;
    for (std::size_t i = 0; i < count; ++i) {
        text += "https://";
        text += numbers.pick(hosts);
        text += "/articles/";
        text += std::to_string(numbers.below(1000000));
        text += '?';
        text += numbers.pick(kept);
        for (std::size_t trackers = 1 + numbers.below(4); trackers > 0; --trackers) {
            text += '&';
            text += numbers.pick(trackerNames);
            text += '=';
            text += numbers.pick(trackerValues);
        }
        text += '\n';
    }
    return text;
}

std::string shortLink()
{
    return "https://www.example.com/watch?v=1&si=x&utm_source=y";
}

} // namespace corpora
