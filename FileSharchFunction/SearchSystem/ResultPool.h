#pragma once

#include "platform/foundation/NSString.h"
#include "platform/foundation/Ref.h"

#include <cstddef>
#include <deque>
#include <string_view>
#include <unordered_set>

/// The paths that a search has delivered, in order. Looking one up takes the same time however many
/// there are; the table for it is made when it is first asked for.
///
/// Ownership: holds a reference to each path. Threads: one at a time.
class ResultPool {
public:
  ResultPool() = default;
  ResultPool(const ResultPool &) = delete;
  ResultPool &operator=(const ResultPool &) = delete;

  /// Frees what the pool holds, on a thread of its own if that would keep the main thread busy for
  /// long. Main thread.
  ~ResultPool();

  /// Throws `std::bad_alloc`, and then nothing has been added.
  void add(Ref<const NSString> path);

  /// Throws `std::bad_alloc`.
  [[nodiscard]] bool contains(const NSString &path);

  void clear() noexcept;

  [[nodiscard]] std::size_t count() const noexcept { return paths_.size(); }

private:
  std::deque<Ref<const NSString>> paths_;
  /// The texts of the first `indexed_` paths.
  std::unordered_set<std::string_view> index_;
  std::size_t indexed_ = 0;
};
