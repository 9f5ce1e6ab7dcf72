#include <VelmoraCore/LinkCleaner.h>

#include <gtest/gtest.h>

#include <cctype>
#include <fstream>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

namespace velmora {
namespace {

struct Row {
    std::string name;
    LinkCleanerConfiguration::Strings ignoredHosts;
    std::string text;
    std::string cleaned;
    std::string removed;
};

std::string unescaped(const std::string &text)
{
    std::string result;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char next = text[i] == '\\' && i + 1 < text.size() ? text[i + 1] : '\0';
        if (next == 'x') {
            result += static_cast<char>(std::stoi(text.substr(i + 2, 2), nullptr, 16));
            i += 3;
        } else if (next == 'n' || next == 't' || next == 'r' || next == '\\') {
            result += next == 'n' ? '\n' : next == 't' ? '\t' : next == 'r' ? '\r' : '\\';
            ++i;
        } else {
            result += text[i];
        }
    }
    return result;
}

constexpr std::string_view ignoring = "ignoring ";

LinkCleanerConfiguration::Strings takeIgnoredHosts(std::vector<std::string> &block)
{
    LinkCleanerConfiguration::Strings hosts;
    if (block.size() < 2 || !block[1].starts_with(ignoring))
        return hosts;
    std::istringstream words(block[1].substr(ignoring.size()));
    for (std::string host; words >> host;)
        hosts.insert(host);
    block.erase(block.begin() + 1);
    return hosts;
}

Row rowOf(std::vector<std::string> block)
{
    Row row{block[0], takeIgnoredHosts(block), {}, {}, {}};
    if (block.size() != 3 && block.size() != 4)
        return {"BrokenRow: " + row.name, {}, "", "x", ""};
    row.text = unescaped(block[1]);
    row.cleaned = block[2] == "=" ? row.text : unescaped(block[2]);
    row.removed = block.size() == 4 ? unescaped(block[3]) : std::string();
    return row;
}

std::vector<Row> rows()
{
    std::vector<Row> rows;
    std::vector<std::string> block;
    const auto endBlock = [&] {
        if (!block.empty())
            rows.push_back(rowOf(std::move(block)));
        block.clear();
    };
    std::ifstream file(VELMORA_TEST_DATA "/Cleaning.txt");
    for (std::string line; std::getline(file, line);) {
        if (line.empty())
            endBlock();
        else if (!line.starts_with('#'))
            block.push_back(line);
    }
    endBlock();
    return rows;
}

std::string nameOf(const testing::TestParamInfo<Row> &info)
{
    std::string name;
    bool begins = true;
    for (const char c : info.param.name) {
        if (std::isalnum(static_cast<unsigned char>(c)) != 0)
            name += static_cast<char>(begins ? std::toupper(static_cast<unsigned char>(c)) : c);
        begins = std::isalnum(static_cast<unsigned char>(c)) == 0;
    }
    return name;
}

std::string described(const std::vector<RemovedQueryItem> &items)
{
    std::string text;
    for (const RemovedQueryItem &item : items)
        text += (text.empty() ? "" : " | ") + item.name + (item.value ? '=' + *item.value : std::string());
    return text;
}

class CleaningRows : public testing::TestWithParam<Row> {};

TEST_P(CleaningRows, AreCleanedAsTheyShould)
{
    const LinkCleaner cleaner(LinkCleanerConfiguration::withDefaultRules(GetParam().ignoredHosts));
    const LinkCleaningResult result = cleaner.clean(GetParam().text);
    EXPECT_EQ(result.cleanedText, GetParam().cleaned);
    EXPECT_EQ(described(result.removedItems), GetParam().removed);
    EXPECT_EQ(result.originalText, GetParam().text);
    EXPECT_EQ(result.didChange(), GetParam().text != GetParam().cleaned);
}

INSTANTIATE_TEST_SUITE_P(, CleaningRows, testing::ValuesIn(rows()), nameOf);

} // namespace
} // namespace velmora
