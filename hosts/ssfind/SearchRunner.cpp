#include "hosts/ssfind/SearchRunner.h"

#include "hosts/ssfind/HiddenFolders.h"
#include "hosts/ssfind/MatchFilter.h"
#include "hosts/ssfind/SearchStrategy.h"
#include "hosts/ssfind/VisibleText.h"

#include <memory>
#include <utility>

namespace searchsystem::ssfind {

namespace {

/// Keeps the matches of a stage for the next one.
class Candidates final : public SearchFollower {
public:
  Candidates(const Place &place, Results &results) : place_(place), results_(results) {}

  [[nodiscard]] const FileList &files() const noexcept { return files_; }

  Next found(std::string_view path) override {
    place_.show(path, shown_);
    files_.add(std::string(path), shown_);
    return results_.isOver() ? Next::Stop : Next::Continue;
  }
  void unread(std::string_view path, std::int32_t reason) override {
    results_.unread(path, reason);
  }
  Next takeTurn() override { return results_.takeTurn(); }
  [[nodiscard]] std::chrono::duration<double> timeToNextTurn() override {
    return results_.timeToNextTurn();
  }

private:
  const Place place_;
  Results &results_;
  FileList files_;
  std::string shown_;
};

} // namespace

bool SearchRunner::mayRepeat(const Options &options, const SearchPlan &plan) {
  return plan.hasOverlap || stagesOf(options).back().size() > 1;
}

void SearchRunner::run() {
  searchFolders(plan_.folders);
  if (options_.list)
    runStages({Place(plan_.files), nullptr, &plan_.files});
  searchFolders(plan_.listedFolders);
}

void SearchRunner::searchFolders(const std::vector<FolderSearch> &folders) {
  for (const FolderSearch &next : folders) {
    if (results_.isOver())
      return;
    if (options_.output.report != Report::Nothing)
      for (const Folder &mount : next.skippedMounts)
        errors_.report(visible(mount.shown) + ": another file system, not searched (use --mounts)");
    searchFolder(next);
  }
}

void SearchRunner::searchFolder(const FolderSearch &search) {
  searchTree(search.folder, search.folder);
  for (const Folder &mount : search.mounts)
    searchTree(mount, search.folder);
}

void SearchRunner::searchTree(const Folder &folder, const Folder &root) {
  const Place place(root);
  runStages({place, &folder.path, nullptr});
  if (!options_.searchesHidden || results_.isOver())
    return;
  for (const Folder &hidden : hiddenFoldersBelow(folder, root, options_.restrictions))
    runStages({place, &hidden.path, nullptr});
}

void SearchRunner::runStages(Source source) {
  std::vector<std::unique_ptr<Candidates>> kept;
  for (const Stage &stage : stages_) {
    if (results_.isOver())
      return;
    const bool isFirst = &stage == &stages_.front();
    SearchFollower *follower = &results_;
    if (&stage != &stages_.back())
      follower = kept.emplace_back(std::make_unique<Candidates>(source.place, results_)).get();
    results_.expectFrom(source.place);
    results_.expectFiles(source.files != nullptr ? std::optional(source.files->paths().size())
                                                 : std::nullopt);
    for (const Pass &pass : stage)
      run(pass, isFirst ? &options_.restrictions : nullptr, source, *follower);
    if (!kept.empty())
      source = {Place(kept.back()->files()), nullptr, &kept.back()->files()};
  }
}

void SearchRunner::run(const Pass &pass, const Restrictions *restrictions, const Source &source,
                       SearchFollower &follower) {
  MatchFilter filter(options_, restrictions, pass, source.place, follower);
  for (const Conditions &part : searchesFor(pass.conditions)) {
    if (results_.isOver())
      return;
    SearchRequest request = source.files != nullptr
                                ? SearchRequest::ofFiles(part, source.files->paths())
                                : SearchRequest::ofFolder(part, *source.folder);
    if (source.folder != nullptr)
      useSpotlight(mayUseIndex(part, *source.folder) ? 1 : 0);
    search(request, filter);
  }
}

} // namespace searchsystem::ssfind
