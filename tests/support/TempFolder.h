#pragma once
// A fixture that gives each test a fresh, empty folder and removes it afterwards.

#include "Printers.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <string>

namespace CordelTest {

class TempFolder : public ::testing::Test {
protected:
    void SetUp() override
    {
        std::string pattern = (std::filesystem::temp_directory_path() / "cordel-test-XXXXXX").string();
        char* made = ::mkdtemp(pattern.data());
        ASSERT_NE(made, nullptr);
        folder = made;
    }
    void TearDown() override
    {
        std::error_code ignored;
        std::filesystem::permissions(folder, std::filesystem::perms::owner_all,
                                     std::filesystem::perm_options::add, ignored);
        std::filesystem::remove_all(folder, ignored);
    }
    // The path of a file inside the folder.
    std::string PathOf(std::string const& name) const { return (folder / name).string(); }

    std::filesystem::path folder;
};

} // namespace CordelTest
