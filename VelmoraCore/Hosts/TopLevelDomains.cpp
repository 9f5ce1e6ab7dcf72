#include <VelmoraCore/Hosts/InternationalName.h>
#include <VelmoraCore/Hosts/TopLevelDomains.h>
#include <VelmoraCore/Text/CharacterClasses.h>

#include <libpsl.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <tuple>

namespace velmora {

namespace {

constexpr std::size_t longestLabel = 63;

bool isListed(const char *lowerCaseLabel)
{
    // Without the star rule a label is a suffix only if the list names it.
    static const psl_ctx_t *const list = psl_builtin();
    return list != nullptr &&
           psl_is_public_suffix2(list, lowerCaseLabel, PSL_TYPE_ICANN | PSL_TYPE_NO_STAR_RULE) != 0;
}

// Two letters are the commonest case by far and few enough to be asked for once.
class TwoLetterDomains {
public:
    TwoLetterDomains()
    {
        for (char first = 'a'; first <= 'z'; ++first) {
            for (char second = 'a'; second <= 'z'; ++second)
                listed_[index(first, second)] = isListed(std::array{first, second, '\0'}.data());
        }
    }

    bool contains(char first, char second) const { return listed_[index(first, second)]; }

private:
    static std::size_t index(char first, char second)
    {
        return static_cast<std::size_t>(first - 'a') * 26 + static_cast<std::size_t>(second - 'a');
    }

    std::array<bool, std::size_t{26} * 26> listed_{};
};

bool isAsciiDomain(std::string_view label)
{
    if (!characters::is(label.front(), characters::letter))
        return false;
    std::array<char, longestLabel + 1> name{};
    std::transform(label.begin(), label.end(), name.begin(), characters::lower);
    if (label.size() == 2) {
        static const TwoLetterDomains twoLetters;
        return characters::is(name[1], characters::letter) && twoLetters.contains(name[0], name[1]);
    }
    return isListed(name.data());
}

bool isKnown(std::string_view label)
{
    const auto isNonAscii = [](char c) { return characters::is(c, characters::nonAscii); };
    if (std::none_of(label.begin(), label.end(), isNonAscii))
        return label.size() <= longestLabel && isAsciiDomain(label);
    if (isListed(std::string(label).c_str()))
        return true;
    const std::optional<std::string> name = foldedLabel(label);
    return name && *name != label && isListed(name->c_str());
}

// Answers given before. A text names few domains again and again, and the list takes a third of a
// microsecond.
class Answers {
public:
    bool isKnown(std::string_view label)
    {
        if (label.size() > longest)
            return velmora::isKnown(label);
        Answer &answer = answers_[placeOf(label)];
        if (std::string_view(answer.label.data(), answer.size) != label) {
            answer.known = velmora::isKnown(label);
            answer.size = static_cast<std::uint8_t>(label.size());
            std::copy(label.begin(), label.end(), answer.label.begin());
        }
        return answer.known;
    }

private:
    static constexpr std::size_t longest = 30;

    struct Answer {
        std::array<char, longest> label{};
        std::uint8_t size = 0;
        bool known = false;
    };

    static std::size_t placeOf(std::string_view label)
    {
        std::size_t hash = label.size();
        for (const char c : label)
            hash = hash * 31 + static_cast<unsigned char>(c);
        return hash % std::tuple_size_v<decltype(answers_)>;
    }

    std::array<Answer, 256> answers_{};
};

} // namespace

bool isTopLevelDomain(std::string_view label)
{
    if (label.size() < 2 || label.size() > longestLabel * 4)
        return false;
    thread_local Answers answers;
    return answers.isKnown(label);
}

} // namespace velmora
