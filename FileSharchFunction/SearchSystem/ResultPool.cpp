#include "FileSharchFunction/SearchSystem/ResultPool.h"

#include "platform/foundation/FreeElsewhere.h"

#include <utility>

ResultPool::~ResultPool() { clear(); }

void ResultPool::add(Ref<const NSString> path) { paths_.push_back(std::move(path)); }

bool ResultPool::contains(const NSString &path) {
  for (; indexed_ < paths_.size(); ++indexed_)
    index_.insert(paths_[indexed_]->view());
  return index_.contains(path.view());
}

void ResultPool::clear() noexcept {
  freeElsewhere(index_);
  indexed_ = 0;
  freeElsewhere(paths_);
}
