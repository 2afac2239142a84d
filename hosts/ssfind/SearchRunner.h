#pragma once

#include "hosts/ssfind/Options.h"
#include "hosts/ssfind/Results.h"
#include "hosts/ssfind/SearchPlan.h"
#include "hosts/ssfind/Stages.h"

#include <string>
#include <vector>

namespace searchsystem::ssfind {

/// Runs the searches that the options ask for, and hands their matches to the results. Refers to
/// all that it is given.
class SearchRunner {
public:
  SearchRunner(const Options &options, const SearchPlan &plan, Results &results,
               StandardError &errors)
      : options_(options), plan_(plan), stages_(stagesOf(options)), results_(results),
        errors_(errors) {}

  /// Whether a file may be found more than once.
  [[nodiscard]] static bool mayRepeat(const Options &options, const SearchPlan &plan);

  void run();

private:
  void searchFolders(const std::vector<FolderSearch> &folders);
  void searchFolder(const FolderSearch &search);
  /// A folder with all below it; it is `root` or a mount below that.
  void searchTree(const Folder &folder, const Folder &root);

  /// Where a stage looks: the one or the other.
  struct Source {
    Place place;
    const std::string *folder;
    const FileList *files;
  };

  void runStages(Source source);
  void run(const Pass &pass, const Restrictions *restrictions, const Source &source,
           SearchFollower &follower);

  const Options &options_;
  const SearchPlan &plan_;
  const std::vector<Stage> stages_;
  Results &results_;
  StandardError &errors_;
};

} // namespace searchsystem::ssfind
