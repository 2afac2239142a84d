#pragma once

#include "platform/foundation/FreeElsewhere.h"
#include "platform/foundation/NSString.h"
#include "platform/foundation/Ref.h"

#include <cstddef>
#include <deque>
#include <string_view>
#include <unordered_set>
#include <utility>

namespace searchsystem {

/// The paths that a search has delivered, in order. A look-up takes constant time; its table is
/// made on the first one.
///
/// Ownership: holds a reference to each path. Threads: one at a time.
class ResultPool {
public:
  ResultPool() = default;
  ResultPool(const ResultPool &) = delete;
  ResultPool &operator=(const ResultPool &) = delete;

  /// Frees a large pool on another thread, so that the main thread is not blocked. Main thread.
  ~ResultPool() {
    freeElsewhere(index_);
    freeElsewhere(paths_);
  }

  /// Throws `std::bad_alloc`, and then nothing has been added.
  void add(Ref<const NSString> path) { paths_.push_back(std::move(path)); }

  /// Throws `std::bad_alloc`.
  [[nodiscard]] bool contains(const NSString &path) {
    for (; indexed_ < paths_.size(); ++indexed_)
      index_.insert(paths_[indexed_]->view());
    return index_.contains(path.view());
  }

private:
  std::deque<Ref<const NSString>> paths_;
  /// The texts of the first `indexed_` paths.
  std::unordered_set<std::string_view> index_;
  std::size_t indexed_ = 0;
};

} // namespace searchsystem
