// A folder of a test's own, with what tests of files need.
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

namespace quaylink::test {

inline void WriteFile(const std::filesystem::path& path, const std::string& contents) {
  std::filesystem::create_directories(path.parent_path());
  std::ofstream(path, std::ios::binary) << contents;
}

inline std::string ReadFile(const std::filesystem::path& path) {
  std::ifstream stream(path, std::ios::binary);
  return stream ? std::string(std::istreambuf_iterator<char>(stream), {}) : "(no file)";
}

class ScratchFolder : public testing::Test {
 protected:
  void SetUp() override {
    std::filesystem::remove_all(folder_);
    std::filesystem::create_directories(folder_);
  }
  void TearDown() override {
    std::error_code ignored;
    std::filesystem::remove_all(folder_, ignored);
  }

  const std::filesystem::path folder_ = [] {
    const auto* test = testing::UnitTest::GetInstance()->current_test_info();
    return std::filesystem::path(testing::TempDir()) /
           (std::string(test->test_suite_name()) + '_' + test->name());
  }();
};

}  // namespace quaylink::test
