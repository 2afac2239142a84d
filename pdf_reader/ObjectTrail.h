#pragma once

#include "pdf_reader/LooseEnds.h"
#include "pdf_reader/ObjectAnswers.h"

#include <cstddef>
#include <vector>

/// The objects that the parse of a content stream passes, for a parse goes on through those that
/// follow in the file. It ends the parse at one for which the answer is known.
///
/// Ownership: the answers and the loose ends live longer. Threads: one at a time.
class ObjectTrail {
public:
  /// Where an object begins, and how much text had been read before it.
  struct Object {
    long position;
    std::size_t textLength;
  };

  ObjectTrail(ObjectAnswers &answers, LooseEnds &looseEnds) noexcept
      : answers_(answers), looseEnds_(looseEnds) {}

  /// Begins anew.
  void clear() noexcept {
    objects_.clear();
    isKnownMet_ = false;
  }

  /// Notes an object that begins when nothing before it lasts. Throws `std::bad_alloc`.
  void enter(long position, std::size_t textLength) {
    if (isKnownMet_)
      return;
    isKnownMet_ = answers_.at(position) != ObjectAnswer::unknown;
    answers_.meet(position);
    objects_.push_back({position, textLength});
  }

  /// Whether the last of the objects is one with a known answer.
  [[nodiscard]] bool isKnownMet() const noexcept { return isKnownMet_; }

  [[nodiscard]] const std::vector<Object> &objects() const noexcept { return objects_; }
  [[nodiscard]] LooseEnds &looseEnds() const noexcept { return looseEnds_; }

private:
  ObjectAnswers &answers_;
  LooseEnds &looseEnds_;
  std::vector<Object> objects_;
  bool isKnownMet_ = false;
};
