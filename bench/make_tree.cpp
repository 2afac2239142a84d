// Makes a tree of empty files whose names, kinds and dates look like an image library's. The same
// parameters make the same tree, so that runs on different days and machines can be compared.

#include "bench/Random.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace searchsystem {

namespace {

constexpr const char *markerName = ".make_tree";

struct Parameters {
  std::uint64_t entries = 200'000;
  std::uint64_t folders = 0;
  double matches = 0.005;
  std::uint64_t depth = 7;

  /// What the marker file in a finished tree holds.
  [[nodiscard]] std::string text() const {
    return "version=1 entries=" + std::to_string(entries) + " folders=" + std::to_string(folders) +
           " matches=" + std::to_string(matches) + " depth=" + std::to_string(depth) + "\n";
  }
};

constexpr std::array<std::string_view, 20> fileWords{"IMG_",        "IMG_",
                                                     "DSC0",        "DSC_",
                                                     "P10",         "Scan ",
                                                     "INVOICE-",    "family dinner ",
                                                     "Sunset ",     "sunrise, panorama ",
                                                     "Café ",       "Cafe\u0301 ",
                                                     "Müller ",     "Mu\u0308nchen ",
                                                     "Straße ",     "RÉSUMÉ ",
                                                     "東京タワー ", "東京タ\u3099ム ",
                                                     "海岸の写真 ", "春节 "};
constexpr std::array<std::string_view, 10> folderWords{
    "2019-03 ",         "2023 ", "Trip ", "Beach ", "Archive.", "RAW ", "Été ",
    "E\u0301te\u0301 ", "写真 ", "scans_"};
constexpr std::array<std::string_view, 7> beforeBeach{
    "", "", "Holiday ", "IMG_", "été ", "e\u0301te\u0301 ", "砂浜 "};
constexpr std::array<std::string_view, 4> beaches{"beach ", "Beach_", "BEACH-", "beach"};
constexpr std::array<std::string_view, 10> searchedExtensions{
    ".jpg", ".jpg", ".jpg", ".JPG", ".JPG", ".Jpg", ".tif", ".TIF", ".pdf", ".pct"};
constexpr std::array<std::string_view, 10> otherExtensions{
    ".jpeg", ".JPEG", ".tiff", ".png", ".PNG", ".txt", ".xmp", ".jpg.xmp", ".mov", ""};

/// A number of fixed width, so that a name never repeats within a folder.
std::string numbered(std::string_view word, std::uint64_t number) {
  std::array<char, 24> digits{};
  std::snprintf(digits.data(), digits.size(), "%06llu", static_cast<unsigned long long>(number));
  return std::string(word) + digits.data();
}

struct NameKind {
  bool hasDot;
  bool hasBeach;
  bool isSearched;
};

std::string fileName(Random &random, NameKind kind, std::uint64_t number) {
  std::string word(kind.hasDot ? "." : "");
  word += random.oneOf(kind.hasBeach ? Random::Choices(beforeBeach) : Random::Choices(fileWords));
  if (kind.hasBeach)
    word += random.oneOf(beaches);
  return numbered(word, number)
      .append(random.oneOf(kind.isSearched ? Random::Choices(searchedExtensions)
                                           : Random::Choices(otherExtensions)));
}

struct Folder {
  std::string path;
  bool isHidden = false;
  std::uint64_t files = 0;
};

/// Plans all folders, each after the one that it lies in; the first is the tree's own.
std::vector<Folder> planFolders(const std::string &root, const Parameters &parameters,
                                std::uint64_t files) {
  // The part of the folders at each depth, in hundredths.
  constexpr std::array<std::uint64_t, 7> parts{2, 6, 17, 28, 26, 15, 6};
  const std::uint64_t depth = std::min<std::uint64_t>(parameters.depth, parts.size());
  std::uint64_t whole = 0;
  for (std::uint64_t level = 0; level < depth; ++level)
    whole += parts[level];

  Random random(1);
  std::vector<Folder> folders{{root}};
  std::size_t firstAbove = 0;
  std::uint64_t part = 0;
  for (std::uint64_t level = 0; level < depth; ++level) {
    part += parts[level];
    const std::size_t firstHere = folders.size();
    const std::uint64_t end = 1 + parameters.folders * part / whole;
    while (folders.size() < end) {
      const Folder &parent = folders[firstAbove + random.below(firstHere - firstAbove)];
      const bool isHidden = random.isOneIn(200);
      std::string name =
          (isHidden ? "." : "") + numbered(random.oneOf(folderWords), folders.size());
      if (random.isOneIn(200))
        name += ".jpg";
      folders.push_back({parent.path + "/" + name, isHidden || parent.isHidden, 0});
    }
    if (folders.size() > firstHere)
      firstAbove = firstHere;
  }

  // Most folders hold a handful to some dozens, some next to nothing, some hundreds.
  std::vector<double> sums;
  double sum = 0;
  for (std::size_t i = 0; i < folders.size(); ++i) {
    const std::uint64_t kind = random.below(100);
    const double size = static_cast<double>(random.below(1000)) / 1000;
    sum += kind < 2 ? 10 + 10 * size : kind < 15 ? size / 10 : 0.3 + size;
    sums.push_back(sum);
  }
  std::uint64_t given = 0;
  for (std::size_t i = 0; i < folders.size(); ++i) {
    const auto upToHere = static_cast<std::uint64_t>(static_cast<double>(files) * sums[i] / sum);
    folders[i].files = upToHere - given;
    given = upToHere;
  }
  folders.back().files += files - given;
  return folders;
}

[[noreturn]] void fail(const std::string &what) {
  throw std::system_error(errno, std::generic_category(), what);
}

class OpenFolder {
public:
  explicit OpenFolder(const std::string &path)
      : path_(path), descriptor_(open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)) {
    if (descriptor_ < 0)
      fail(path);
  }
  ~OpenFolder() { close(descriptor_); }
  OpenFolder(const OpenFolder &) = delete;
  OpenFolder &operator=(const OpenFolder &) = delete;

  void addFile(const std::string &name, const timespec &modified) const {
    const std::array<timespec, 2> times{modified, modified};
    if (mknodat(descriptor_, name.c_str(), S_IFREG | 0644, 0) != 0 ||
        utimensat(descriptor_, name.c_str(), times.data(), AT_SYMLINK_NOFOLLOW) != 0)
      fail(path_ + "/" + name);
  }

private:
  const std::string &path_;
  int descriptor_;
};

/// A time from the beginning of 2015 to the end of 2024.
timespec momentOf(Random &random) {
  constexpr std::int64_t first = 1420070400;
  constexpr std::int64_t end = 1735689600;
  timespec moment{};
  moment.tv_sec = first + static_cast<std::int64_t>(random.below(end - first));
  moment.tv_nsec = static_cast<long>(random.below(1'000'000'000));
  return moment;
}

/// Whether a file's own name begins with a dot.
bool hasDot(std::uint64_t number) { return Random(number ^ 0x5DEECE66D).isOneIn(100); }

/// Returns how many files match.
std::uint64_t makeTree(const std::string &root, const Parameters &parameters) {
  // The marker file is an entry, too.
  const std::uint64_t files = parameters.entries - parameters.folders - 1;
  const std::vector<Folder> folders = planFolders(root, parameters, files);
  std::uint64_t visibleLeft = 0;
  std::uint64_t number = 0;
  for (const Folder &folder : folders)
    for (std::uint64_t i = 0; i < folder.files; ++i)
      visibleLeft += hasDot(number++) || folder.isHidden ? 0 : 1;
  const double part =
      parameters.matches > 1
          ? parameters.matches / static_cast<double>(std::max<std::uint64_t>(files, 1))
          : parameters.matches;
  const auto matches = static_cast<std::uint64_t>(std::llround(part * static_cast<double>(files)));
  if (matches > visibleLeft)
    throw std::runtime_error("only " + std::to_string(visibleLeft) + " files are not hidden");

  Random random(2);
  std::uint64_t matchesLeft = matches;
  number = 0;
  for (const Folder &folder : folders) {
    if (&folder != folders.data() && mkdir(folder.path.c_str(), 0755) != 0)
      fail(folder.path);
    const OpenFolder open(folder.path);
    for (std::uint64_t i = 0; i < folder.files; ++i) {
      NameKind kind{hasDot(number++), false, random.below(10) < 6};
      if (kind.hasDot || folder.isHidden) {
        // Hidden files do not match, whatever their names.
        kind.hasBeach = random.isBelow(part);
      } else if (random.below(visibleLeft--) < matchesLeft) {
        --matchesLeft;
        kind.hasBeach = kind.isSearched = true;
      } else {
        kind.hasBeach = !kind.isSearched && random.isBelow(part);
      }
      open.addFile(fileName(random, kind, i), momentOf(random));
    }
  }
  return matches;
}

} // namespace

} // namespace searchsystem

using namespace searchsystem;

int main(int argc, char **argv) {
  Parameters parameters;
  std::string target;
  CLI::App application("Makes a tree of named, dated, empty files.");
  application.add_option("folder", target, "where; if it holds such a tree, nothing is done")
      ->required();
  application.add_option("--entries", parameters.entries, "files and folders in all")
      ->check(CLI::Range(2, 100'000'000))
      ->capture_default_str();
  application.add_option("--folders", parameters.folders,
                         "how many of them are folders (default: one in twenty)");
  application
      .add_option("--matches", parameters.matches,
                  "how many files match \"beach\"; up to 1: which part of the files")
      ->check(CLI::NonNegativeNumber)
      ->capture_default_str();
  application.add_option("--depth", parameters.depth, "how deep folders lie")
      ->check(CLI::Range(1, 7))
      ->capture_default_str();
  CLI11_PARSE(application, argc, argv);
  if (application.count("--folders") == 0)
    parameters.folders = parameters.entries / 20;

  try {
    if (parameters.folders >= parameters.entries)
      throw std::runtime_error("there must be fewer folders than entries");
    std::filesystem::create_directories(target);
    const std::string marker = target + "/" + markerName;
    if (!std::filesystem::is_empty(target)) {
      std::ifstream stream(marker);
      if (std::string(std::istreambuf_iterator<char>(stream), {}) == parameters.text())
        return 0;
      throw std::runtime_error(target + " holds something else, or an unfinished tree");
    }
    const std::uint64_t matches = makeTree(target, parameters);
    if (!(std::ofstream(marker) << parameters.text()).flush())
      throw std::runtime_error(marker + " cannot be written");
    std::cout << target << ": " << parameters.entries << " entries, " << parameters.folders
              << " folders, " << matches << " matches\n";
  } catch (const std::exception &error) {
    std::cerr << "make_tree: " << error.what() << '\n';
    return 2;
  }
  return 0;
}
