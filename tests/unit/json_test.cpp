/// @file What is read as JSON, and that a save loses nothing of it.
#include "kald/web_utils.h"
#include "tests/unit/tree.h"

#include <json/value.h>

namespace {

/// The line that a save makes of a document in a file; "none" if it does not load.
class JsonFileTest : public Tree {
protected:
    std::string Resaved(std::string const& text)
    {
        Write(m_path, text);
        Json::Value document("old");
        if (!WebUtils::LoadJsonFile(document, m_path.c_str())) {
            return document.isNull() ? "none" : "not emptied";
        }
        EXPECT_TRUE(WebUtils::SaveJsonFile(document, m_path.c_str()));
        return Read(m_path);
    }
};

TEST_F(JsonFileTest, KeepsEveryKindOfValue)
{
    EXPECT_EQ(Resaved("\xEF\xBB\xBF{\"b\":1,\"a\":[{},null],\"b\":true}\n"),
              "{\"a\":[{},null],\"b\":true}\n");
    EXPECT_EQ(Resaved("[-0,1.50,1E2,-9223372036854775808,18446744073709551615]"),
              "[0,1.5,100.0,-9223372036854775808,18446744073709551615]\n");
    EXPECT_EQ(Resaved(R"({"\u0000a":"\ud83d\ude00\u0000","\u0000":"\/\t"})"),
              "{\"\\u0000\":\"/\\t\",\"\\u0000a\":\"\xf0\x9f\x98\x80\\u0000\"}\n");
    EXPECT_EQ(Resaved("\"\xff\""), "\"\xff\"\n");
}

TEST_F(JsonFileTest, ReadsAThousandLevelsAndNoMore)
{
    std::string const deep = std::string(1000, '[') + std::string(1000, ']');
    EXPECT_EQ(Resaved(deep), deep + '\n');
    EXPECT_EQ(Resaved('[' + deep + ']'), "none");
    EXPECT_EQ(Resaved(std::string(100000, '[')), "none");
}

TEST_F(JsonFileTest, TakesNothingElseForJson)
{
    for (std::string const text : {"", "[]x", "[{},]", "[]//c", "[", "[\"\t\"]", "[01]", "[1e999]",
                                   "[2e308]", "[\"\\ud800\"]", "[NaN]", "['a']", "[\"\\x\"]"}) {
        EXPECT_EQ(Resaved(text), "none") << text;
    }
    EXPECT_EQ(Resaved(std::string("[]\0x", 4)), "none");
    Json::Value document;
    EXPECT_FALSE(WebUtils::LoadJsonFile(document, (m_path + "/y").c_str()));
}

TEST_F(JsonFileTest, IsSavedForOwnerAndGroupWhateverWasLeft)
{
    Json::Value document(Json::arrayValue);
    Write(m_path + ".tmp", std::string(100, 'x')); // by a process that was killed
    EXPECT_TRUE(WebUtils::SaveJsonFile(document, m_path.c_str()));
    EXPECT_EQ(Read(m_path), "[]\n");
    EXPECT_EQ(std::filesystem::status(m_path).permissions(), std::filesystem::perms(0640));
    EXPECT_FALSE(WebUtils::SaveJsonFile(document, appliance::kRoot)); // a folder
    EXPECT_FALSE(WebUtils::SaveJsonFile(document, (m_path + "/y").c_str()));
}

TEST_F(JsonFileTest, KeepsItsModeWhenItIsReplaced)
{
    Json::Value document(Json::arrayValue);
    Write(m_path, "old");
    std::filesystem::permissions(m_path, std::filesystem::perms(0604));
    EXPECT_TRUE(WebUtils::SaveJsonFile(document, m_path.c_str()));
    EXPECT_EQ(std::filesystem::status(m_path).permissions(), std::filesystem::perms(0604));
}

} // namespace
