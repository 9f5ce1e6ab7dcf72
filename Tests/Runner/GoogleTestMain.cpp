// The entry of every program of tests without Qt. Usage: PROGRAM [FILE] [an option of GoogleTest]...
// FILE is a test's file without folder and ending, and runs the tests in it; without it, all tests run.

#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <string>
#include <vector>

namespace {

std::vector<const testing::TestSuite *> suites()
{
    const testing::UnitTest &unitTest = *testing::UnitTest::GetInstance();
    std::vector<const testing::TestSuite *> all;
    all.reserve(static_cast<std::size_t>(unitTest.total_test_suite_count()));
    for (int i = 0; i < unitTest.total_test_suite_count(); ++i)
        all.push_back(unitTest.GetTestSuite(i));
    return all;
}

/// A filter that lets the suites of this file through; empty when it has none.
std::string filterFor(const std::string &file)
{
    std::string filter;
    for (const testing::TestSuite *suite : suites()) {
        if (std::filesystem::path(suite->GetTestInfo(0)->file()).stem() == file)
            filter += std::string(suite->name()) + ".*:";
    }
    return filter;
}

} // namespace

int main(int argc, char *argv[])
{
    testing::InitGoogleTest(&argc, argv);
    if (argc > 1) {
        const std::string filter = filterFor(argv[1]);
        if (filter.empty()) {
            std::fprintf(stderr, "%s: no tests of a file %s in this program\n", argv[0], argv[1]);
            return 2;
        }
        // A filter of the user's own chooses among all tests.
        if (testing::GTEST_FLAG(filter) == "*")
            testing::GTEST_FLAG(filter) = filter;
    }
    return RUN_ALL_TESTS();
}
