/// @file What is read as JSON, and that a save loses nothing of it.
#include "kald/web_utils.h"
#include "platform/appliance_paths.h"
#include "tests/files.h"

#include <gtest/gtest.h>
#include <json/value.h>

namespace {

using namespace std::string_literals;

/// The line that a save makes of what is read from a text; "none" if it is no JSON.
std::string Resaved(std::string const& text)
{
    std::string const path = appliance::kRoot + std::string("/x");
    PutFile(path, text);
    Json::Value document("old");
    if (!WebUtils::LoadJsonFile(document, path.c_str())) {
        return document.isNull() ? "none" : "not emptied";
    }
    return WebUtils::SaveJsonFile(document, path.c_str()) ? ReadFile(path) : "not saved";
}

TEST(JsonFile, KeepsEveryValueThatATextOrADoubleCanHold)
{
    EXPECT_EQ(Resaved("\xEF\xBB\xBF{\"b\":1,\"a\":[{},null],\"b\":true}\n"),
              "{\"a\":[{},null],\"b\":true}\n");
    EXPECT_EQ(Resaved("[-0,1.50,1E2,-9223372036854775808,18446744073709551615]"),
              "[0,1.5,100.0,-9223372036854775808,18446744073709551615]\n");
    EXPECT_EQ(Resaved(R"({"\u0000a":"\ud83d\ude00\u0000","\u0000":"\/\t\ud800"})"),
              "{\"\\u0000\":\"/\\u0009\xef\xbf\xbd\",\"\\u0000a\":\"\xf0\x9f\x98\x80\\u0000\"}\n");
    EXPECT_EQ(Resaved(R"([-1e999,{"1e999":2e308,"a":"1e999\""},1e-999,7])"),
              "[null,{\"1e999\":null,\"a\":\"1e999\\\"\"},0.0,7]\n");
    EXPECT_EQ(Resaved("\"\xff\""), "\"\xff\"\n");
}

TEST(JsonFile, HoldsOneJsonTextOfAThousandLevelsAtMost)
{
    std::string const deep = std::string(1000, '[') + std::string(1000, ']');
    EXPECT_EQ(Resaved(deep), deep + '\n');
    for (std::string const& text : {'[' + deep + ']', "[]\0x"s, "[]x"s, "[{},]"s}) {
        EXPECT_EQ(Resaved(text), "none") << text;
    }
}

} // namespace
