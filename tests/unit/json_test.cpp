/// @file What is read as JSON, and that a save loses nothing of it.
#include "kald/web_utils.h"
#include "tests/unit/tree.h"

#include <json/value.h>

namespace {

struct JsonFile : Tree {
    /// The line that a save makes of what is read from a text; "none" if it is no JSON.
    std::string Resaved(std::string const& text) const
    {
        Write(m_path, text);
        Json::Value document("old");
        if (!WebUtils::LoadJsonFile(document, m_path.c_str())) {
            return document.isNull() ? "none" : "not emptied";
        }
        return WebUtils::SaveJsonFile(document, m_path.c_str()) ? Read(m_path) : "not saved";
    }
};

TEST_F(JsonFile, KeepsEveryKindOfValue)
{
    EXPECT_EQ(Resaved("\xEF\xBB\xBF{\"b\":1,\"a\":[{},null],\"b\":true}\n"),
              "{\"a\":[{},null],\"b\":true}\n");
    EXPECT_EQ(Resaved("[-0,1.50,1E2,-9223372036854775808,18446744073709551615]"),
              "[0,1.5,100.0,-9223372036854775808,18446744073709551615]\n");
    EXPECT_EQ(Resaved(R"({"\u0000a":"\ud83d\ude00\u0000","\u0000":"\/\t"})"),
              "{\"\\u0000\":\"/\\u0009\",\"\\u0000a\":\"\xf0\x9f\x98\x80\\u0000\"}\n");
    EXPECT_EQ(Resaved("\"\xff\""), "\"\xff\"\n");
}

TEST_F(JsonFile, LosesOnlyWhatNoTextOrDoubleCanHold)
{
    EXPECT_EQ(Resaved(R"(["\ud800x","\uDC00","\\ud800"])"),
              "[\"\xef\xbf\xbdx\",\"\xef\xbf\xbd\",\"\\\\ud800\"]\n");
    EXPECT_EQ(Resaved(R"([-1e999,{"1e999":2e308,"a":"1e999\""},1e-999,7])"),
              "[null,{\"1e999\":null,\"a\":\"1e999\\\"\"},0.0,7]\n");
}

TEST_F(JsonFile, HasAThousandLevelsAtMost)
{
    std::string const deep = std::string(1000, '[') + std::string(1000, ']');
    EXPECT_EQ(Resaved(deep), deep + '\n');
    EXPECT_EQ(Resaved('[' + deep + ']'), "none");
    EXPECT_EQ(Resaved(std::string(100000, '[')), "none");
}

TEST_F(JsonFile, HoldsOneJsonTextAlone)
{
    for (std::string const text : {"", "[]x", "[{},]", "[]//c", "[", "[\"\t\"]", "[01]", "[NaN]",
                                   "[1e999", "['a']", "[\"\\x\"]"}) {
        EXPECT_EQ(Resaved(text), "none") << text;
    }
    EXPECT_EQ(Resaved(std::string("[]\0x", 4)), "none");
    Json::Value document(Json::arrayValue);
    EXPECT_FALSE(WebUtils::SaveJsonFile(document, appliance::kRoot)); // a folder
}

} // namespace
