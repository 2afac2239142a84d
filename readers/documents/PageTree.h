#pragma once

#include "readers/documents/Document.h"
#include "readers/documents/ObjectStore.h"

#include <cstdint>
#include <functional>
#include <span>
#include <unordered_set>
#include <vector>

namespace searchsystem {

/// Walks through the tree of pages (ISO 32000-2, 7.7.3), whatever it says about itself: types,
/// counts and parents do not matter, each node is met once.
class PageTree {
public:
  using Visit = std::function<bool(const Page &)>;

  explicit PageTree(ObjectStore &store) noexcept : store_(store) {}

  /// Pages in their order, until `visit` answers false; where the tree gives none, all objects that
  /// call themselves pages.
  void forEachPage(const Visit &visit);

private:
  struct Node {
    std::span<const Object> kids;
    std::size_t next;
    Page inherited;
  };

  /// False: to be stopped.
  [[nodiscard]] bool walk(const Visit &visit);
  [[nodiscard]] bool visitLoosePages(const Visit &visit);
  [[nodiscard]] Page inherit(const Page &inherited, const Dictionary &dictionary);

  ObjectStore &store_;
  std::unordered_set<std::uint32_t> met_;
  bool hasPages_ = false;
};

} // namespace searchsystem
