#pragma once

#include "FileSharchFunction/SearchSystem/SearchSystem.h"

#include <functional>
#include <limits>
#include <string>
#include <vector>

namespace searchsystem {

using Paths = std::vector<std::string>;

/// A search and its conditions.
struct Wanted {
  static constexpr double open = std::numeric_limits<double>::infinity();

  const char *name = nullptr;
  const char *content = nullptr;
  bool isInExif = false, isInPDF = false;
  /// Dates, in seconds since 2001; an open end is none.
  double modifiedFrom = -open, modifiedTo = open, shotFrom = -open;
  /// One condition is enough.
  bool any = false;
  bool isFolderAlone = false;
};

/// A request with the objects that it borrows.
class Record {
public:
  Record(const std::string &folder, const Wanted &wanted, SearchResultCallback callback);
  ~Record();
  Record(const Record &) = delete;
  Record &operator=(const Record &) = delete;

  void setList(const Paths &paths);

  SearchPredicate predicate{};

private:
  template <class T> T keep(T object) {
    kept_.push_back(object);
    return object;
  }

  std::vector<CFTypeRef> kept_;
};

/// A host with one search at a time, which judges every report.
class Host {
public:
  /// Starts a search and follows it to its end, and the library's threads to that of their work.
  /// Returns the results in alphabetical order.
  static Paths search(Record &record);

  /// The callback for the records of `search`.
  static void take(CFStringRef path, int32_t state);

  /// The paths of what could not be read in the last search, in alphabetical order.
  static Paths unread();

  /// Runs the loop until the library is idle and has given back what it keeps for another search.
  static void settle();
};

/// Whether searches are deep; those of what they cannot read then come to `Host::unread`.
void searchDeep(bool isDeep);

/// Whether the library may use the index.
void useIndex(bool isUsed);

/// `paths` relative to `folder`, joined by blanks.
std::string relative(const Paths &paths, const std::string &folder);

} // namespace searchsystem
