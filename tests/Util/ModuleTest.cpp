#include <Cordel/Util/Module.h>

#include "TempFolder.h"

#include <cstdlib>
#include <fstream>
#include <sstream>
#include <string>

using namespace Cordel;

namespace {

class ModuleTest : public CordelTest::TempFolder {
protected:
    void SetUp() override
    {
        TempFolder::SetUp();
        logPath = PathOf("module.log");
        ::setenv("CORDEL_TEST_MODULE_LOG", logPath.c_str(), 1);
    }
    void TearDown() override
    {
        ::unsetenv("CORDEL_TEST_MODULE_LOG");
        TempFolder::TearDown();
    }
    // "L" for every real open, "U" for every real close, in order.
    std::string Log() const
    {
        std::ifstream in(logPath);
        std::stringstream text;
        text << in.rdbuf();
        return text.str();
    }

    std::string logPath;
};

using AddFunction = int (*)(int, int);

} // namespace

TEST_F(ModuleTest, LoadTwiceOpensOnceAndOneUnloadCloses)
{
    Util::Module module(CORDEL_TEST_MODULE_PATH);
    EXPECT_FALSE(module.IsLoaded());
    EXPECT_EQ(module.GetFunction("cordel_test_add"), nullptr) << "an unloaded module must not load itself";
    EXPECT_TRUE(module.Load());
    EXPECT_TRUE(module.Load());
    EXPECT_TRUE(module.IsLoaded());
    EXPECT_EQ(Log(), "L");

    module.Unload();
    EXPECT_FALSE(module.IsLoaded());
    EXPECT_EQ(Log(), "LU");
    module.Unload();
    EXPECT_EQ(Log(), "LU");
}

TEST_F(ModuleTest, SymbolsFoundAndNotFound)
{
    Util::Module module(FilePath(CORDEL_TEST_MODULE_PATH));
    ASSERT_TRUE(module.Load());
    auto add = reinterpret_cast<AddFunction>(module.GetFunction("cordel_test_add"));
    ASSERT_NE(add, nullptr);
    EXPECT_EQ(add(40, 2), 42);
    EXPECT_EQ(module.GetFunction("cordel_test_missing"), nullptr);
    EXPECT_EQ(module.GetFunction(""), nullptr);
}

TEST_F(ModuleTest, DestructorCloses)
{
    {
        Util::Module module(CORDEL_TEST_MODULE_PATH);
        ASSERT_TRUE(module.Load());
    }
    EXPECT_EQ(Log(), "LU");
}

TEST_F(ModuleTest, FailedLoadsLeaveTheObjectUnloadedAndRetryable)
{
    Util::Module empty("");
    EXPECT_FALSE(empty.Load());
    EXPECT_FALSE(empty.IsLoaded());

    std::string const later = PathOf("later.so");
    Util::Module module(later.c_str());
    EXPECT_FALSE(module.Load());
    EXPECT_FALSE(module.IsLoaded());
    EXPECT_EQ(module.GetFunction("cordel_test_add"), nullptr);

    // Not a library at all: the loader refuses it.
    std::ofstream(later) << "not a shared library";
    EXPECT_FALSE(module.Load());

    std::ifstream in(CORDEL_TEST_MODULE_PATH, std::ios::binary);
    std::ofstream(later, std::ios::binary | std::ios::trunc) << in.rdbuf();
    EXPECT_TRUE(module.Load());
    EXPECT_NE(module.GetFunction("cordel_test_name"), nullptr);
}
