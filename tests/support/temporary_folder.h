#pragma once

#include <unistd.h>

#include <atomic>
#include <cstddef>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

/// An empty folder of its own, gone afterwards.
class TestFolder {
 public:
  TestFolder() { std::filesystem::create_directory(path_); }
  ~TestFolder() { std::filesystem::remove_all(path_); }
  TestFolder(const TestFolder&) = delete;
  TestFolder& operator=(const TestFolder&) = delete;

  [[nodiscard]] std::string path() const { return path_.string(); }
  [[nodiscard]] std::ptrdiff_t files() const {
    return std::distance(std::filesystem::directory_iterator(path_),
                         std::filesystem::directory_iterator());
  }
  void put(const std::string& name) { std::ofstream(path_ / name) << "x"; }
  void remove(const std::string& name) { std::filesystem::remove(path_ / name); }

 private:
  static inline std::atomic<int> count_ = 0;
  const std::filesystem::path path_ =
      std::filesystem::temp_directory_path() /
      ("kestrel-test-" + std::to_string(::getpid()) + "-" + std::to_string(++count_));
};
