#pragma once

#include "FileSharchFunction/SearchSystem/SearchSystem.h"
#include "hosts/ssfind/CFObject.h"
#include "hosts/ssfind/Options.h"

#include <string>
#include <string_view>
#include <vector>

namespace searchsystem::ssfind {

/// The library's record of one search, with the objects that it points to.
class SearchRequest {
public:
  [[nodiscard]] static SearchRequest ofFolder(const Conditions &conditions,
                                              const std::string &folder);
  /// The paths must not name folders. There may be none of them, which finds nothing.
  [[nodiscard]] static SearchRequest ofFiles(const Conditions &conditions,
                                             const std::vector<std::string_view> &paths);

  [[nodiscard]] SearchPredicate &record() noexcept { return record_; }

private:
  struct DateObjects {
    DateObjects() = default;
    explicit DateObjects(const DateRange &range);

    CFObject<CFDateRef> start;
    CFObject<CFDateRef> end;
  };

  explicit SearchRequest(const Conditions &conditions);

  CFObject<CFStringRef> name_;
  CFObject<CFStringRef> keyword_;
  DateObjects modified_;
  DateObjects taken_;
  CFObject<CFStringRef> folder_;
  CFObject<CFArrayRef> files_;
  SearchPredicate record_{};
};

} // namespace searchsystem::ssfind
