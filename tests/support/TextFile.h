#pragma once

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <string_view>

namespace kestrel::testing {

/// All of `file`; empty where there is none.
inline std::string contentOf(const std::filesystem::path& file) {
  std::ostringstream content;
  content << std::ifstream(file, std::ios::binary).rdbuf();
  return content.str();
}

/// Makes or changes `file`, which then holds `text` alone.
inline void write(const std::filesystem::path& file, std::string_view text) {
  std::ofstream(file, std::ios::binary) << text;
}

}  // namespace kestrel::testing
