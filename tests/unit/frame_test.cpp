/// @file The privilege file as it is written, which no method does.
#include "frame/privilege.h"
#include "tests/unit/tree.h"

namespace {

using PrivilegeFileTest = Tree;

TEST_F(PrivilegeFileTest, IsWrittenWhenTheObjectGoes)
{
    Write(appliance::kPrivilegeFile, R"({"7":1,"1026":{"dtv":true,"sharing":true}})");
    {
        PrivilegeFile file;
        file.SetPrivilege(7, "dtv", true);
        file.SetPrivilege(1026, "dtv", false);
        EXPECT_TRUE(file.GetPrivilege(7, "dtv"));
        EXPECT_EQ(Read(appliance::kPrivilegeFile).find("\"7\":1"), 1U);
    }
    EXPECT_EQ(Read(appliance::kPrivilegeFile),
              "{\"1026\":{\"dtv\":false,\"sharing\":true},\"7\":{\"dtv\":true}}\n");
}

TEST_F(PrivilegeFileTest, IsNotWrittenByAQuestion)
{
    Write(appliance::kPrivilegeFile, R"({ "7":{"dtv":true}})");
    EXPECT_TRUE(PrivilegeFile().GetPrivilege(7, "dtv"));
    EXPECT_EQ(Read(appliance::kPrivilegeFile), R"({ "7":{"dtv":true}})");
}

} // namespace
