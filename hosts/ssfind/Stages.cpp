#include "hosts/ssfind/Stages.h"

namespace searchsystem::ssfind {

namespace {

/// A search of the same places and in the same way, which every file matches.
Conditions unconditional(const Conditions &conditions) {
  Conditions all = conditions;
  all.name.reset();
  all.modified.reset();
  all.keyword.reset();
  all.taken.reset();
  return all;
}

Conditions forKeyword(const Conditions &conditions, const std::string &keyword) {
  Conditions search = unconditional(conditions);
  search.keyword = keyword;
  return search;
}

std::vector<Stage> stagesForAll(const Options &options) {
  const Conditions &conditions = options.conditions;
  const bool hasTests = !options.furtherNames.empty() || options.restrictions.isAny();
  std::vector<Stage> stages{{{conditions, Pass::Names::All}}};
  if (conditions.hasContent() && hasTests) {
    stages.front().front().conditions.keyword.reset();
    stages.front().front().conditions.taken.reset();
    Conditions content = unconditional(conditions);
    content.keyword = conditions.keyword;
    content.taken = conditions.taken;
    stages.push_back({{content}});
  }
  for (const std::string &keyword : options.furtherKeywords)
    stages.push_back({{forKeyword(conditions, keyword)}});
  return stages;
}

std::vector<Stage> stagesForAny(const Options &options) {
  const Conditions &conditions = options.conditions;
  const bool hasOwn = conditions.name || conditions.modified || conditions.hasContent();
  Stage passes;
  if (hasOwn || options.furtherNames.empty())
    passes.push_back({conditions});
  if (!options.furtherNames.empty())
    passes.push_back({unconditional(conditions), Pass::Names::Any});
  for (const std::string &keyword : options.furtherKeywords)
    passes.push_back({forKeyword(conditions, keyword)});
  if (conditions.hasContent() && options.restrictions.isAny())
    return {{{unconditional(conditions)}}, passes};
  return {passes};
}

} // namespace

std::vector<Stage> stagesOf(const Options &options) {
  return options.conditions.isAnyEnough ? stagesForAny(options) : stagesForAll(options);
}

} // namespace searchsystem::ssfind
