#pragma once

#include <filesystem>
#include <fstream>
#include <iostream>
#include <span>
#include <string>
#include <system_error>
#include <utility>

namespace searchsystem {

/// The name of a fuzzer's seed, a path below the folder of all, and its bytes.
using Seed = std::pair<std::string, std::string>;

/// The whole of a program that writes seeds into the folder named by its only argument. Returns the
/// exit code.
inline int writeSeeds(int argc, char **argv, std::span<const Seed> seeds) {
  if (argc != 2) {
    std::cerr << "usage: " << argv[0] << " FOLDER\n";
    return 2;
  }
  for (const auto &[name, bytes] : seeds) {
    const std::filesystem::path path = std::filesystem::path(argv[1]) / name;
    std::error_code error;
    std::filesystem::create_directories(path.parent_path(), error);
    if (!(std::ofstream(path, std::ios::binary) << bytes).flush()) {
      std::cerr << argv[0] << ": " << path << " cannot be written\n";
      return 1;
    }
  }
  return 0;
}

} // namespace searchsystem
