#include "pdf_reader/ContentReadings.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace searchsystem {

namespace {

std::uint8_t bitOf(std::size_t encoding) noexcept {
  return static_cast<std::uint8_t>(1U << encoding);
}

} // namespace

ContentReading &ContentReadings::newReading() {
  return *live_.emplace_back(std::make_unique<ContentReading>());
}

void ContentReadings::board(SearchedContent &content) {
  const auto found = std::find_if(live_.begin(), live_.end(), [&](const auto &reading) {
    return reading->state == ContentState() && reading->cut().empty();
  });
  if (found == live_.end()) {
    boardAlone(content);
    return;
  }
  ContentReading &reading = **found;
  PastPointer past = reading.recent_.empty() ? nullptr : reading.recent_.back();
  if (!past || !past->text.empty() || past->boarded != reading.end() ||
      (past->invalid | past->found) != 0)
    past = newPast(reading);
  add(reading, content, std::move(past));
}

ContentReading &ContentReadings::boardAlone(SearchedContent &content) {
  ContentReading &reading = newReading();
  add(reading, content, newPast(reading));
  return reading;
}

ContentReadings::PastPointer ContentReadings::newPast(ContentReading &reading, std::string text,
                                                      std::uint8_t invalid, std::uint8_t found) {
  return reading.recent_.emplace_back(std::make_shared<ContentPast>(
      ContentPast{std::move(text), reading.end(), invalid, found, {}, {}}));
}

/// Replaces a past by the one that replaced it, if any.
void ContentReadings::resolve(PastPointer &past) noexcept {
  while (past->same)
    past = PastPointer(past->same);
}

/// Adds contents to a reading, linked with those of the same edges and past.
void ContentReadings::add(ContentReading &reading, SearchedContent &added, PastPointer past) {
  if (added.last == nullptr)
    added.last = &added;
  SearchedContent *&first = reading.riders_[added.start % ContentReading::blockSize];
  int compared = 0;
  constexpr int mostCompared = 4;
  for (auto *i = first; i != nullptr && compared < mostCompared; i = i->others, ++compared) {
    resolve(i->past);
    if (i->past != past)
      continue;
    i->last->next = &added;
    i->last = added.last;
    added.past.reset();
    return;
  }
  added.past = std::move(past);
  added.others = std::exchange(first, &added);
  ++reading.count_;
}

bool ContentReadings::take(ContentReading &reading, std::string_view token) {
  switch (reading.state.take(token)) {
  case Effect::none:
    return true;
  case Effect::fail:
    return end(reading, Result::failed);
  case Effect::stop:
    return end(reading, Result::unknown);
  case Effect::show:
    break;
  }
  const std::string_view digits = digitsOfHexString(reading.state.shown());
  char *const room = reading.room(digits.size() / 2 + 1);
  show(reading, sizeBeforeNUL(room, decodeHexDigits(digits, room, digits.size() / 2 + 1)));
  return true;
}

ContentReading &ContentReadings::fork(ContentReading &reading) {
  search(reading);
  ContentReading &other = newReading();
  other.state = reading.state;
  const std::string_view cut = reading.cut();
  std::copy(cut.begin(), cut.end(), other.room(cut.size()));
  show(other, cut.size());
  other.change_ = ++changes_;
  return other;
}

void ContentReadings::change(ContentReading &from, ContentReading &to, long position) {
  const auto riders = from.riders_.extract(position % ContentReading::blockSize);
  SearchedContent *next = riders.empty() ? nullptr : riders.mapped();
  while (next != nullptr) {
    SearchedContent &content = *std::exchange(next, next->others);
    add(to, content, changedPast(from, to, content.past));
    --from.count_;
  }
}

/// The past that riders take to another reading.
ContentReadings::PastPointer ContentReadings::changedPast(const ContentReading &from,
                                                          ContentReading &to, PastPointer past) {
  resolve(past);
  if (past->change == to.change_)
    if (PastPointer changed = past->changed.lock())
      return changed;
  searchAcross(from, *past);
  std::string text = past->text;
  text += from.textSince(*past);
  if (text.size() > keptText_)
    text.erase(0, search_.wholeCharacters(text, text.size() - keptText_));
  PastPointer changed = newPast(to, std::move(text), past->invalid, past->found);
  past->change = to.change_;
  past->changed = changed;
  return changed;
}

void ContentReadings::keepLargest() {
  const auto largest =
      std::max_element(live_.begin(), live_.end(),
                       [](const auto &a, const auto &b) { return a->count_ < b->count_; });
  std::iter_swap(live_.begin(), largest);
  for (std::size_t i = 1; i < live_.size(); ++i)
    giveUp(*live_[i]);
  join();
}

void ContentReadings::join(std::size_t first) {
  const auto begin = live_.begin() + static_cast<std::ptrdiff_t>(first);
  live_.erase(
      std::remove_if(begin, live_.end(), [](const auto &reading) { return reading->count_ == 0; }),
      live_.end());
  for (std::size_t i = first; i < live_.size(); ++i)
    for (std::size_t j = i + 1; j < live_.size();) {
      if (live_[i]->state != live_[j]->state || live_[i]->cut() != live_[j]->cut()) {
        ++j;
        continue;
      }
      if (live_[i]->count_ < live_[j]->count_)
        std::swap(live_[i], live_[j]);
      ContentReading &from = *live_[j];
      search(from);
      live_[i]->change_ = ++changes_;
      while (!from.riders_.empty())
        change(from, *live_[i], from.riders_.begin()->first);
      live_.erase(live_.begin() + static_cast<std::ptrdiff_t>(j));
    }
}

/// Ends all riders of a reading; always false. For `unknown` their text decides.
bool ContentReadings::end(ContentReading &reading, Result result) {
  if (result == Result::unknown)
    search(reading);
  for (const auto &[place, first] : std::exchange(reading.riders_, {}))
    endRiders(reading, first, result);
  return false;
}

/// Ends contents with the same edges.
void ContentReadings::endRiders(ContentReading &reading, SearchedContent *first, Result result) {
  for (SearchedContent *i = first; i != nullptr; i = i->others) {
    resolve(i->past);
    if (result == Result::unknown)
      searchAcross(reading, *i->past);
    const Result own = result != Result::unknown ? result : resultOf(reading, *i->past);
    for (SearchedContent *content = i; content != nullptr; content = content->next)
      content->result = own;
    i->past.reset();
    --reading.count_;
  }
}

ContentReadings::Result ContentReadings::resultOf(const ContentReading &reading,
                                                  const ContentPast &past) const noexcept {
  if (!reading.cut().empty())
    return Result::absent;
  for (std::size_t i = 0; i < search_.encodingCount(); ++i)
    if ((past.invalid & bitOf(i)) == 0)
      return (past.found & bitOf(i)) != 0 ? Result::found : Result::absent;
  return Result::absent;
}

void ContentReadings::endAll(long position) {
  for (const auto &reading : live_)
    if (const auto riders = reading->riders_.extract(position % ContentReading::blockSize)) {
      search(*reading);
      endRiders(*reading, riders.mapped(), Result::unknown);
    }
  join();
}

void ContentReadings::endAll() {
  for (const auto &reading : live_)
    end(*reading, Result::unknown);
}

void ContentReadings::search(ContentReading &reading) {
  if (reading.end() == reading.searched_)
    return;
  for (std::size_t i = 0; i < search_.encodingCount(); ++i)
    searchIn(reading, i);
  reading.searched_ = reading.end();
  settle(reading);
  dropText(reading);
}

/// Marks the pasts whose text holds the keyword, and those whose text is invalid.
void ContentReadings::searchIn(ContentReading &reading, std::size_t encoding) {
  const std::uint8_t bit = bitOf(encoding);
  // Whether more text can change the answer.
  const auto isOpen = [&](const PastPointer &past) {
    const bool isFound = (past->found & bit) != 0;
    return (past->invalid & bit) == 0 && !(isFound && search_.isAlwaysValid());
  };
  const auto &settled = reading.settled_;
  const auto &recent = reading.recent_;
  const bool hasSettled = std::any_of(settled.begin(), settled.end(), isOpen);
  const auto first =
      hasSettled ? recent.begin() : std::find_if(recent.begin(), recent.end(), isOpen);
  if (!hasSettled && first == recent.end())
    return;
  const auto occurs =
      search_.occursIn(hasSettled ? reading.text() : reading.textSince(**first), encoding);
  if (occurs && !*occurs)
    return;
  // Each text is the end of the one before it: valid if that is, without the keyword if that is.
  auto valid = first;
  if (!occurs)
    valid = std::partition_point(recent.begin(), recent.end(), [&](const PastPointer &past) {
      return !search_.occursIn(reading.textSince(*past), encoding);
    });
  for (const PastPointer &past : settled)
    (occurs ? past->found : past->invalid) |= bit;
  if (!occurs)
    std::for_each(recent.begin(), valid, [bit](const PastPointer &past) { past->invalid |= bit; });
  const auto end = std::partition_point(valid, recent.end(), [&](const PastPointer &past) {
    return search_.occursIn(reading.textSince(*past), encoding).value_or(false);
  });
  std::for_each(valid, end, [bit](const PastPointer &past) { past->found |= bit; });
}

/// Looks for occurrences that begin before riders boarded.
void ContentReadings::searchAcross(const ContentReading &reading, ContentPast &past) {
  const std::string_view text = reading.textSince(past);
  if (past.text.empty() || text.empty())
    return;
  const std::string joint =
      past.text + std::string(text.substr(0, search_.wholeCharacters(text, keptText_)));
  for (std::size_t i = 0; i < search_.encodingCount(); ++i)
    if (((past.invalid | past.found) & bitOf(i)) == 0 && search_.occursIn(joint, i).value_or(false))
      past.found |= bitOf(i);
}

/// Settles pasts whose text no longer matters, and joins those with the same marks.
void ContentReadings::settle(ContentReading &reading) {
  auto &recent = reading.recent_;
  std::vector<PastPointer> all = std::move(reading.settled_);
  const auto firstKept = std::find_if(recent.begin(), recent.end(), [&](const PastPointer &past) {
    return reading.end() - past->boarded < keptText_;
  });
  for (auto past = recent.begin(); past != firstKept; ++past) {
    searchAcross(reading, **past);
    (*past)->text.clear();
  }
  all.insert(all.end(), recent.begin(), firstKept);
  recent.erase(recent.begin(), firstKept);
  reading.settled_.clear();
  for (PastPointer &past : all) {
    const auto same = std::find_if(
        reading.settled_.begin(), reading.settled_.end(), [&past](const PastPointer &other) {
          return other->invalid == past->invalid && other->found == past->found;
        });
    if (same == reading.settled_.end())
      reading.settled_.push_back(std::move(past));
    else
      past->same = *same;
  }
}

/// Drops text in which no further occurrence can begin.
void ContentReadings::dropText(ContentReading &reading) noexcept {
  if (reading.wholeSize_ <= keptText_)
    return;
  const std::size_t dropped =
      search_.wholeCharacters(reading.text(), reading.wholeSize_ - keptText_);
  reading.textSize_ -= dropped;
  reading.wholeSize_ -= dropped;
  reading.dropped_ += dropped;
  std::memmove(reading.text_.data(), reading.text_.data() + dropped, reading.textSize_);
}

} // namespace searchsystem
