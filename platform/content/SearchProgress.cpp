#include "platform/content/SearchProgress.h"

#include "platform/content/Content.h"

namespace searchsystem {

SearchProgress &SearchProgress::shared() noexcept {
  static SearchProgress progress;
  return progress;
}

} // namespace searchsystem

void PFContentGetProgress(PFContentProgress *progress) {
  const auto &shared = searchsystem::SearchProgress::shared();
  progress->folders = shared.folders.load(std::memory_order_relaxed);
  progress->files = shared.files.load(std::memory_order_relaxed);
  progress->unread = shared.unread.load(std::memory_order_relaxed);
}
