#include "FileSharchFunction/SearchSystem/FileAhead.h"

#include "platform/content/SearchProgress.h"
#include "platform/foundation/PathComponents.h"
#include "platform/foundation/TryTwice.h"

#include <functional>

namespace searchsystem {

FileAhead::FileAhead(Ref<const NSString> path, Listed listed, const ContentConditions &conditions,
                     ContentTest test, bool matches) noexcept
    : path_(std::move(path)), listed_(listed), conditions_(conditions), test_(test),
      isPhotograph_(FileKinds::isPhotograph(extensionOfName(path_->view()))), isTaken_(matches),
      isTested_(matches), matches_(matches) {}

struct FileAhead::Undecided {
  std::array<FileAhead *, mostTogether> files{};
  std::array<PhotographToRead, mostTogether> photographs{};
  std::size_t count = 0;

  void read() noexcept {
    if (count == 0)
      return;
    const auto take = [&](std::size_t place, ExifAnswers deep) {
      FileAhead &file = *files[place];
      ContentConditions::addDeep(file.answers_, deep);
      PhotographToRead none;
      file.end(file.judge(none) == ContentVerdict::Meets);
    };
    files.front()->conditions_.readPhotographs({photographs.data(), std::exchange(count, 0)},
                                               std::ref(take));
  }
};

void FileAhead::test(std::span<const Ref<FileAhead>> files) noexcept {
  Undecided undecided;
  for (const Ref<FileAhead> &file : files) {
    PhotographToRead photograph;
    ContentVerdict verdict = file->judge(photograph);
    if (verdict == ContentVerdict::PhotographDecides && !photograph.file && undecided.count > 0) {
      // Where descriptors are few, it may be opened once the others are closed.
      undecided.read();
      file->answers_ = {};
      verdict = file->judge(photograph);
    }
    if (verdict == ContentVerdict::PhotographDecides) {
      undecided.files[undecided.count] = file.get();
      undecided.photographs[undecided.count++] = std::move(photograph);
    } else {
      file->end(verdict == ContentVerdict::Meets);
    }
  }
  undecided.read();
}

ContentVerdict FileAhead::judge(PhotographToRead &photograph) noexcept {
  // Where memory is short the file is passed over, and the next may fare better.
  auto verdict = ContentVerdict::Fails;
  tryTwice([&] {
    SearchItem item(*path_, listed_.kind);
    verdict = conditions_.judge(item, test_, answers_);
    photograph = {path_.get(), std::move(item.photograph), listed_.mayHaveSidecar};
  });
  return verdict;
}

void FileAhead::end(bool matches) noexcept {
  SearchProgress::count(SearchProgress::shared().files);
  {
    const LockGuard guard(lock_);
    matches_ = matches;
    isTested_.store(true);
  }
  // Whoever has taken the file holds it. The sleeper need not wait for the lock.
  tested_.signal();
}

void FileAhead::wait() noexcept {
  const LockGuard guard(lock_);
  while (!isTested())
    tested_.wait(lock_);
}

} // namespace searchsystem
