#include "FileSharchFunction/SearchSystem/FileAhead.h"

#include "platform/foundation/PathComponents.h"
#include "platform/foundation/TryTwice.h"

#include <functional>

namespace searchsystem {

FileAhead::FileAhead(Ref<const NSString> path, const ContentConditions &conditions,
                     ContentTest test, bool matches) noexcept
    : path_(std::move(path)), conditions_(conditions), test_(test),
      isPhotograph_(FileKinds::isPhotograph(extensionOfName(path_->view()))), isTaken_(matches),
      isTested_(matches), matches_(matches) {}

void FileAhead::test(std::span<const Ref<FileAhead>> files) noexcept {
  std::array<FileAhead *, mostTogether> undecided{};
  std::array<const NSString *, mostTogether> paths{};
  std::size_t count = 0;
  for (const Ref<FileAhead> &file : files) {
    const ContentVerdict verdict = file->judge();
    if (verdict == ContentVerdict::PhotographDecides) {
      undecided[count] = file.get();
      paths[count++] = file->path_.get();
    } else {
      file->end(verdict == ContentVerdict::Meets);
    }
  }
  if (count == 0)
    return;
  const auto take = [&](std::size_t place, ExifAnswers deep) {
    FileAhead &file = *undecided[place];
    ContentConditions::addDeep(file.answers_, deep);
    file.end(file.judge() == ContentVerdict::Meets);
  };
  undecided.front()->conditions_.readPhotographs({paths.data(), count}, std::ref(take));
}

ContentVerdict FileAhead::judge() noexcept {
  // Where memory is short the file is passed over, and the next may fare better.
  auto verdict = ContentVerdict::Fails;
  tryTwice([&] {
    SearchItem item(*path_);
    verdict = conditions_.judge(item, test_, answers_);
  });
  return verdict;
}

void FileAhead::end(bool matches) noexcept {
  const LockGuard guard(lock_);
  matches_ = matches;
  isTested_.store(true);
  tested_.signal();
}

void FileAhead::wait() noexcept {
  const LockGuard guard(lock_);
  while (!isTested())
    tested_.wait(lock_);
}

} // namespace searchsystem
