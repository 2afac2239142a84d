#pragma once

#include "readers/documents/Document.h"

#include <cstdint>
#include <unordered_map>
#include <unordered_set>

namespace searchsystem {

/// Which content a document shows when it is opened (ISO 32000-2, 8.11): the state that the default
/// configuration gives its groups. The document has to outlive it.
class OptionalContent {
public:
  explicit OptionalContent(Document &document);

  /// Whether content that belongs to this group or membership dictionary is hidden; what is neither
  /// hides nothing.
  [[nodiscard]] bool isHidden(const Object &membership);

private:
  [[nodiscard]] bool computeIsHidden(const Dictionary &dictionary, Reference reference);
  [[nodiscard]] bool isGroupShown(const Object &group) const;
  [[nodiscard]] bool doesPolicyShow(const Dictionary &membership);
  [[nodiscard]] bool doesExpressionShow(const Object &expression, int depth, int &steps);

  Document &document_;
  bool isShownByDefault_ = true;
  /// Groups that are not as the default says.
  std::unordered_set<std::uint32_t> exceptions_;
  std::unordered_map<std::uint32_t, bool> hidden_;
};

} // namespace searchsystem
