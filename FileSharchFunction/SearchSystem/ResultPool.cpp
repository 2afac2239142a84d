#include "FileSharchFunction/SearchSystem/ResultPool.h"

#include <utility>

void ResultPool::add(Ref<const NSString> path) { paths_.push_back(std::move(path)); }

bool ResultPool::contains(const NSString &path) {
  for (; indexed_ < paths_.size(); ++indexed_)
    index_.insert(paths_[indexed_]->view());
  return index_.contains(path.view());
}

void ResultPool::clear() noexcept {
  index_.clear();
  indexed_ = 0;
  paths_.clear();
}
