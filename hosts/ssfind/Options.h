#pragma once

#include "hosts/ssfind/CommandTemplate.h"
#include "hosts/ssfind/DateRange.h"
#include "hosts/ssfind/ExcludedPaths.h"
#include "hosts/ssfind/FormatTemplate.h"
#include "hosts/ssfind/NamePattern.h"
#include "hosts/ssfind/SizeRange.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace searchsystem::ssfind {

/// The conditions for files, and which files to examine, as far as one search of the library can
/// have them.
struct Conditions {
  std::optional<std::string> name;
  std::optional<DateRange> modified;
  /// Text in the file: in that of a PDF, in the EXIF tags of a photograph, or in either.
  std::optional<std::string> keyword;
  bool isKeywordInPDF = true;
  bool isKeywordInExif = true;
  /// When a photograph was taken.
  std::optional<DateRange> taken;
  bool isAnyEnough = false;
  bool isCaseSensitive = false;
  bool searchesSubfolders = true;
  bool usesIndex = true;

  [[nodiscard]] bool hasContent() const noexcept { return keyword || taken; }
};

/// What a file must also be, whether all conditions must hold or any.
struct Restrictions {
  ExcludedPaths excluded;
  std::optional<SizeRange> size;
  /// How many folders and files a path may have below the folder searched.
  std::optional<std::uint64_t> depth;

  [[nodiscard]] bool dependOnFolder() const noexcept { return depth || !excluded.isEmpty(); }
  [[nodiscard]] bool isAny() const noexcept { return size || dependOnFolder(); }
};

enum class Format { Path, Long, Json };
enum class Order { AsFound, ByPath, ByName, LargestFirst, NewestFirst, LatestShotFirst };
enum class Coloring { Auto, Always, Never };

/// What is reported: all matches, their number, nothing, or the files that could not be read.
enum class Report { All, Count, Nothing, Unread };

struct OutputOptions {
  Format format = Format::Path;
  /// In place of that format.
  std::optional<FormatTemplate> formatTemplate;
  Order order = Order::AsFound;
  bool isReversed = false;
  Coloring coloring = Coloring::Auto;
  Report report = Report::All;
  std::optional<std::uint64_t> limit;
  /// What to run with the matches in place of printing them.
  std::optional<CommandTemplate> command;
  /// How many of these at a time; none for one on each processor.
  std::optional<std::uint64_t> jobs;
  /// Whether formats with details have the shooting date among them, in a deep search with the
  /// camera.
  bool hasShootingDate = false;
  bool isDeep = true;
  char separator = '\n';
};

struct Options {
  std::vector<std::string> folders;
  /// The file that lists paths to look at; "-" is standard input.
  std::optional<std::string> list;
  char listSeparator = '\n';
  bool searchesMounts = false;
  /// Whether to look into folders whose names begin with a dot.
  bool searchesHidden = false;
  /// Whether all kinds of files are looked at, and documents and photographs of any make read.
  bool isDeep = true;
  /// Only files with these extensions; empty for no such choice.
  std::vector<std::string> extensions;
  Conditions conditions;
  /// Conditions beside those, of the same kinds, that need searches of their own or tests here.
  std::vector<NamePattern> furtherNames;
  std::vector<std::string> furtherKeywords;
  Restrictions restrictions;
  /// What to say if nothing matches, if anything.
  std::string hint;
  OutputOptions output;
};

} // namespace searchsystem::ssfind
