/// @file Joining and splitting lists of texts.
#include "text_list/text_list.h"

#include <gtest/gtest.h>

namespace {

using kalddbquery::JoinString;
using kalddbquery::SplitString;
using namespace std::string_literals;

struct List {
    std::vector<std::string> parts;
    std::string text; ///< the parts joined with the separator
    char separator = ',';
};

class TextListTest : public testing::TestWithParam<List> {};

TEST_P(TextListTest, JoinsPartsAndSplitsThemAgain)
{
    auto const& [parts, text, separator] = GetParam();
    EXPECT_EQ(JoinString(parts, std::string(1, separator)), text);
    EXPECT_EQ(SplitString(text, separator), parts);
}

INSTANTIATE_TEST_SUITE_P(Lists, TextListTest,
                         testing::Values(List{{}, ""}, List{{"one"}, "one"},
                                         List{{"a", "b", "c"}, "a,b,c"}, List{{"", ""}, ","},
                                         List{{"", "a", "", "b", ""}, ",a,,b,"},
                                         List{{"a\0b"s, "\xff,"s}, "a\0b\n\xff,"s, '\n'},
                                         List{{"a", "b"}, "a\351b", '\351'},
                                         List{{"a", "b"}, "a\0b"s, '\0'}));

TEST(TextListHelpersTest, JoinsWithAnySeparatorAndEmptyParts)
{
    EXPECT_EQ(JoinString({"a", "", "c"}, ", "), "a, , c");
    EXPECT_EQ(JoinString({"a", "b"}, ""), "ab");
    EXPECT_EQ(JoinString({""}, ","), ""); // which has no parts when it is split
}

} // namespace
