#pragma once

#include "hosts/ssfind/Place.h"
#include "hosts/ssfind/Search.h"
#include "hosts/ssfind/Stages.h"

namespace searchsystem::ssfind {

/// Hands on those matches of a pass that meet what the library cannot test.
class MatchFilter final : public SearchFollower {
public:
  /// `pass` and the options must stay alive; the restrictions may be null.
  MatchFilter(const Options &options, const Restrictions *restrictions, const Pass &pass,
              const Place &place, SearchFollower &next)
      : options_(options), restrictions_(restrictions), pass_(pass), place_(place), next_(next) {}

  Next found(std::string_view path) override {
    return passes(path) ? next_.found(path) : Next::Continue;
  }
  void unread(std::string_view path, std::int32_t reason) override { next_.unread(path, reason); }
  Next takeTurn() override { return next_.takeTurn(); }
  [[nodiscard]] std::chrono::duration<double> timeToNextTurn() override {
    return next_.timeToNextTurn();
  }

private:
  [[nodiscard]] bool passes(std::string_view path) const;
  [[nodiscard]] bool meetRestrictions(std::string_view path) const;

  const Options &options_;
  const Restrictions *const restrictions_;
  const Pass &pass_;
  const Place place_;
  SearchFollower &next_;
};

} // namespace searchsystem::ssfind
