#pragma once

#include "pdf_reader/LooseEnds.h"
#include "pdf_reader/ObjectAnswers.h"

#include <cstddef>
#include <vector>

/// The objects that the parse of a content stream passes, for a parse goes on through those that
/// follow in the file. It ends the parse a little behind one for which the answer is known.
///
/// Ownership: the answers and the loose ends live longer. Threads: one at a time.
class ObjectTrail {
public:
  /// Where an object begins, and how much text had been read before it.
  struct Object {
    long position;
    std::size_t textLength;
  };

  /// `overlap` is how much of the text behind an object with a known answer has to be read.
  ObjectTrail(ObjectAnswers &answers, LooseEnds &looseEnds, std::size_t overlap) noexcept
      : answers_(answers), looseEnds_(looseEnds), overlap_(overlap) {}

  /// Begins anew. `readsOn` is false to read nothing behind an object with a known answer.
  void clear(bool readsOn) noexcept {
    objects_.clear();
    isKnownMet_ = false;
    readsOn_ = readsOn;
  }

  /// Notes an object that begins when nothing before it lasts. Throws `std::bad_alloc`.
  void enter(long position, std::size_t textLength) {
    if (isKnownMet_)
      return;
    isKnownMet_ = answers_.at(position) != ObjectAnswer::unknown;
    answers_.meet(position);
    objects_.push_back({position, textLength});
  }

  /// Whether enough was read. Where there is no text before an object with a known answer, no
  /// keyword can begin there.
  [[nodiscard]] bool isComplete(std::size_t textLength) const noexcept {
    if (!isKnownMet_)
      return false;
    const std::size_t before = objects_.back().textLength;
    return before == 0 || !readsOn_ || textLength - before >= overlap_;
  }

  /// Whether the last of the objects is one with a known answer.
  [[nodiscard]] bool isKnownMet() const noexcept { return isKnownMet_; }

  [[nodiscard]] const std::vector<Object> &objects() const noexcept { return objects_; }
  [[nodiscard]] LooseEnds &looseEnds() const noexcept { return looseEnds_; }

private:
  ObjectAnswers &answers_;
  LooseEnds &looseEnds_;
  std::size_t overlap_;
  std::vector<Object> objects_;
  bool isKnownMet_ = false;
  bool readsOn_ = true;
};
