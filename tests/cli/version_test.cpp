#include "cli/version.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

namespace sonorelle {
namespace {

TEST(Version, IsTheProjects) {
    std::ifstream file(std::filesystem::path(__FILE__).parent_path() / "../../CMakeLists.txt");
    const std::string text{std::istreambuf_iterator<char>(file), {}};
    ASSERT_FALSE(text.empty());
    EXPECT_NE(text.find("project(sonorelle VERSION " + std::string(kVersion) + " "), std::string::npos);
}

} // namespace
} // namespace sonorelle
