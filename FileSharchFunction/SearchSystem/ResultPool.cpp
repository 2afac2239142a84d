#include "FileSharchFunction/SearchSystem/ResultPool.h"

#include "platform/foundation/NSThread.h"

#include <new>
#include <utility>

namespace {

/// So many paths are freed in about a millisecond.
constexpr std::size_t mostFreedAtOnce = 20'000;

/// Frees paths on a thread of its own.
class FreeingJob final : public ThreadJob {
public:
  /// Throws `std::bad_alloc`.
  explicit FreeingJob(std::deque<Ref<const NSString>> &paths) { paths_.swap(paths); }

private:
  void main() override { paths_.clear(); }
  void ended() noexcept override { delete this; }

  std::deque<Ref<const NSString>> paths_;
};

} // namespace

ResultPool::~ResultPool() { clear(); }

void ResultPool::add(Ref<const NSString> path) { paths_.push_back(std::move(path)); }

bool ResultPool::contains(const NSString &path) {
  for (; indexed_ < paths_.size(); ++indexed_)
    index_.insert(paths_[indexed_]->view());
  return index_.contains(path.view());
}

void ResultPool::clear() noexcept {
  index_.clear();
  indexed_ = 0;
  if (paths_.size() > mostFreedAtOnce) {
    try {
      NSThread::detachNewThread(*new FreeingJob(paths_));
    } catch (...) {
      // Without memory for the job it is done here, and takes its time.
    }
  }
  paths_.clear();
}
