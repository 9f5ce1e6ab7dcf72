#include "Printable.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using namespace std::string_literals;

TEST(Printable, LeavesTextAsItIs)
{
    const std::string text = "a b\\~ \u00E4\u4E2D\U0001F642\u00A0\u200B";
    EXPECT_EQ(printable(text), text);
    EXPECT_EQ(printable(""), "");
}

TEST(Printable, EscapesControlsOfBothSets)
{
    EXPECT_EQ(printable("a\0\n\t\x1B[31m\x7F"s), "a\\x00\\x0a\\x09\\x1b[31m\\x7f");
    EXPECT_EQ(printable("\u0080\u0085\u009B\u009F\u00A1"), "\\u0080\\u0085\\u009b\\u009f\u00A1");
}

TEST(Printable, EscapesWhatTurnsTheDirectionOfTextOrBreaksLines)
{
    EXPECT_EQ(printable("\u061C\u200E\u200F\u2028\u2029\u202A\u202E\u2066\u2069"),
              "\\u061c\\u200e\\u200f\\u2028\\u2029\\u202a\\u202e\\u2066\\u2069");
    EXPECT_EQ(printable("\u2027\u202F\u2065\u206A"), "\u2027\u202F\u2065\u206A");
}

TEST(Printable, EscapesBytesThatAreNotUtf8)
{
    EXPECT_EQ(printable("\x9B\xC3\xFFx\xED\xA0\x80"), "\\x9b\\xc3\\xffx\\xed\\xa0\\x80");
}

} // namespace
