#include "pdf_reader/ContentReadings.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace searchsystem {

namespace {

template <class T> std::int32_t takeFree(std::vector<std::int32_t> &free, std::vector<T> &all) {
  if (!free.empty()) {
    const std::int32_t index = free.back();
    free.pop_back();
    return index;
  }
  all.emplace_back();
  // Freeing one must not fail.
  free.reserve(all.capacity());
  return static_cast<std::int32_t>(all.size() - 1);
}

template <class T> T &at(std::vector<T> &all, std::int32_t index) noexcept {
  return all[static_cast<std::size_t>(index)];
}

std::uint8_t bitOf(std::size_t encoding) noexcept {
  return static_cast<std::uint8_t>(1U << encoding);
}

} // namespace

ContentReading &ContentReadings::newReading() {
  if (spare_.empty())
    spare_.push_back(std::make_unique<ContentReading>());
  live_.push_back(std::move(spare_.back()));
  spare_.pop_back();
  return *live_.back();
}

/// Takes a reading that has no riders out of use.
void ContentReadings::remove(ContentReading &reading) noexcept {
  for (const Index past : reading.settled_)
    releasePast(past);
  for (const Index past : reading.recent_)
    releasePast(past);
  reading.settled_.clear();
  reading.recent_.clear();
  for (const std::uint16_t place : reading.usedHeads_)
    reading.heads_[place] = ContentReading::unused;
  reading.usedHeads_.clear();
  reading.textSize_ = reading.wholeSize_ = reading.dropped_ = reading.searched_ = 0;
  reading.state = {};
}

void ContentReadings::board(std::size_t content) {
  const auto found = std::find_if(live_.begin(), live_.end(), [&](const auto &reading) {
    return reading->state == ContentState() && reading->cut().empty();
  });
  if (found == live_.end()) {
    boardAlone(content);
    return;
  }
  ContentReading &reading = **found;
  Index past = reading.recent_.empty() ? none : reading.recent_.back();
  if (past == none || !at(pasts_, past).text.empty() || at(pasts_, past).boarded != reading.end() ||
      (at(pasts_, past).invalid | at(pasts_, past).found) != 0)
    past = newPast(reading, {}, nullptr);
  addContent(reading, content, past);
}

ContentReading &ContentReadings::boardAlone(std::size_t content) {
  ContentReading &reading = newReading();
  addContent(reading, content, newPast(reading, {}, nullptr));
  return reading;
}

void ContentReadings::addContent(ContentReading &reading, std::size_t content, Index past) {
  const Index riders = takeFree(freeRiders_, riders_);
  const auto index = static_cast<Index>(content);
  at(riders_, riders) = {index, index, past, none};
  ++at(pasts_, past).riders;
  add(reading, ContentReading::placeOf(contents_[content].start), riders);
}

ContentReadings::Index ContentReadings::newPast(ContentReading &reading, std::string text,
                                                const Past *marks) {
  const std::uint8_t invalid = marks == nullptr ? 0 : marks->invalid;
  const std::uint8_t found = marks == nullptr ? 0 : marks->found;
  const Index past = takeFree(freePasts_, pasts_);
  at(pasts_, past) = {std::move(text), reading.end(), invalid, found, 1};
  reading.recent_.push_back(past);
  return past;
}

/// Drops one reference to a past.
void ContentReadings::releasePast(Index past) noexcept {
  while (past != none && --at(pasts_, past).riders == 0) {
    freePasts_.push_back(past);
    past = std::exchange(at(pasts_, past).same, none);
  }
}

ContentReadings::Index ContentReadings::resolve(Index past) noexcept {
  while (at(pasts_, past).same != none)
    past = at(pasts_, past).same;
  return past;
}

/// Adds riders to a reading, joined with those of the same edges and past.
void ContentReadings::add(ContentReading &reading, std::size_t place, Index riders) {
  Riders &added = at(riders_, riders);
  Index &head = reading.heads_[place];
  if (head == ContentReading::unused) {
    reading.usedHeads_.push_back(static_cast<std::uint16_t>(place));
    head = none;
  }
  constexpr int mostCompared = 4;
  int compared = 0;
  for (Index i = head; i != none && compared < mostCompared; i = at(riders_, i).next, ++compared) {
    Riders &other = at(riders_, i);
    if (resolve(other.past) != added.past)
      continue;
    at(contents_, other.last).next = added.first;
    other.last = added.last;
    releasePast(added.past);
    freeRiders_.push_back(riders);
    return;
  }
  added.next = head;
  head = riders;
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
  const std::size_t size = decodeHexDigits(digits, room, digits.size() / 2 + 1);
  const void *const zero = std::memchr(room, 0, size);
  show(reading,
       zero == nullptr ? size : static_cast<std::size_t>(static_cast<const char *>(zero) - room));
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
  if (from.hasEdgeAt(position))
    changePlace(from, to, ContentReading::placeOf(position));
}

void ContentReadings::changePlace(ContentReading &from, ContentReading &to, std::size_t place) {
  for (Index i = std::exchange(from.heads_[place], none); i != none;) {
    const Index next = at(riders_, i).next;
    const Index past = changedPast(from, to, at(riders_, i).past);
    ++at(pasts_, past).riders;
    releasePast(std::exchange(at(riders_, i).past, past));
    add(to, place, i);
    --from.count_;
    i = next;
  }
}

/// The past that riders take to another reading.
ContentReadings::Index ContentReadings::changedPast(ContentReading &from, ContentReading &to,
                                                    Index past) {
  past = resolve(past);
  if (at(pasts_, past).change == to.change_)
    return at(pasts_, past).changed;
  const bool isRecent =
      std::find(from.settled_.begin(), from.settled_.end(), past) == from.settled_.end();
  if (isRecent)
    searchAcross(from, at(pasts_, past));
  const Past &old = at(pasts_, past);
  std::string text = old.text;
  text += isRecent ? from.textFrom(old.boarded) : from.text();
  if (text.size() > keptText_)
    text.erase(0, search_.wholeCharacters(text, text.size() - keptText_));
  const Past marks = {{}, 0, old.invalid, old.found};
  const Index changed = newPast(to, std::move(text), &marks);
  at(pasts_, past).change = to.change_;
  at(pasts_, past).changed = changed;
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
  for (std::size_t i = first; i < live_.size(); ++i)
    for (std::size_t j = i + 1; j < live_.size();) {
      if (live_[i]->count_ != 0 && live_[j]->count_ != 0) {
        if (live_[i]->state != live_[j]->state || live_[i]->cut() != live_[j]->cut()) {
          ++j;
          continue;
        }
        if (live_[i]->count_ < live_[j]->count_)
          std::swap(live_[i], live_[j]);
        ContentReading &from = *live_[j];
        search(from);
        live_[i]->change_ = ++changes_;
        for (const std::uint16_t place : from.usedHeads_)
          changePlace(from, *live_[i], place);
      } else if (live_[j]->count_ != 0) {
        std::swap(live_[i], live_[j]);
      }
      remove(*live_[j]);
      spare_.push_back(std::move(live_[j]));
      live_.erase(live_.begin() + static_cast<std::ptrdiff_t>(j));
    }
  if (live_.size() == first + 1 && live_.back()->count_ == 0) {
    remove(*live_.back());
    spare_.push_back(std::move(live_.back()));
    live_.pop_back();
  }
}

/// Ends all riders of a reading; always false. For `unknown` their text decides.
bool ContentReadings::end(ContentReading &reading, Result result) {
  if (result == Result::unknown)
    search(reading);
  for (const std::uint16_t place : reading.usedHeads_)
    endPlace(reading, place, result);
  return false;
}

void ContentReadings::endPlace(ContentReading &reading, std::size_t place, Result result) {
  for (Index i = std::exchange(reading.heads_[place], none); i != none;) {
    const Riders ended = at(riders_, i);
    const Index past = resolve(ended.past);
    if (result == Result::unknown &&
        std::find(reading.settled_.begin(), reading.settled_.end(), past) == reading.settled_.end())
      searchAcross(reading, at(pasts_, past));
    const Result own = result != Result::unknown ? result : resultOf(reading, at(pasts_, past));
    for (Index content = ended.first; content != none; content = at(contents_, content).next)
      at(contents_, content).result = own;
    releasePast(ended.past);
    freeRiders_.push_back(i);
    --reading.count_;
    i = ended.next;
  }
}

ContentReadings::Result ContentReadings::resultOf(const ContentReading &reading,
                                                  const Past &past) const noexcept {
  if (!reading.cut().empty())
    return Result::absent;
  for (std::size_t i = 0; i < search_.encodingCount(); ++i)
    if ((past.invalid & bitOf(i)) == 0)
      return (past.found & bitOf(i)) != 0 ? Result::found : Result::absent;
  return Result::absent;
}

void ContentReadings::endAll(long position) {
  for (const auto &reading : live_)
    if (reading->hasEdgeAt(position)) {
      search(*reading);
      endPlace(*reading, ContentReading::placeOf(position), Result::unknown);
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
  const auto isOpen = [&](Index past) {
    const bool isFound = (at(pasts_, past).found & bit) != 0;
    return (at(pasts_, past).invalid & bit) == 0 && !(isFound && search_.isAlwaysValid());
  };
  const auto textOf = [&](Index past) { return reading.textFrom(at(pasts_, past).boarded); };
  const std::vector<Index> &settled = reading.settled_;
  const std::vector<Index> &recent = reading.recent_;
  const bool hasSettled = std::any_of(settled.begin(), settled.end(), isOpen);
  const auto first =
      hasSettled ? recent.begin() : std::find_if(recent.begin(), recent.end(), isOpen);
  if (!hasSettled && first == recent.end())
    return;
  const auto occurs = search_.occursIn(hasSettled ? reading.text() : textOf(*first), encoding);
  if (occurs && !*occurs)
    return;
  // Each text is the end of the one before it: valid if that is, without the keyword if that is.
  auto valid = first;
  if (!occurs)
    valid = std::partition_point(recent.begin(), recent.end(), [&](Index past) {
      return !search_.occursIn(textOf(past), encoding);
    });
  for (const Index past : settled)
    (occurs ? at(pasts_, past).found : at(pasts_, past).invalid) |= bit;
  if (!occurs)
    std::for_each(recent.begin(), valid, [&](Index past) { at(pasts_, past).invalid |= bit; });
  const auto end = std::partition_point(valid, recent.end(), [&](Index past) {
    return search_.occursIn(textOf(past), encoding).value_or(false);
  });
  std::for_each(valid, end, [&](Index past) { at(pasts_, past).found |= bit; });
}

/// Looks for occurrences that begin before riders boarded.
void ContentReadings::searchAcross(const ContentReading &reading, Past &past) {
  const std::string_view text = reading.textFrom(past.boarded);
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
  const std::size_t end = reading.end();
  auto &recent = reading.recent_;
  std::size_t count = 0;
  for (; count < recent.size() && end - at(pasts_, recent[count]).boarded >= keptText_; ++count)
    searchAcross(reading, at(pasts_, recent[count]));
  std::vector<Index> &settled = reading.settled_;
  settled.insert(settled.end(), recent.begin(),
                 recent.begin() + static_cast<std::ptrdiff_t>(count));
  recent.erase(recent.begin(), recent.begin() + static_cast<std::ptrdiff_t>(count));
  std::size_t kept = 0;
  for (std::size_t i = 0; i < settled.size(); ++i) {
    Past &past = at(pasts_, settled[i]);
    past.text.clear();
    const auto same = std::find_if(
        settled.begin(), settled.begin() + static_cast<std::ptrdiff_t>(kept), [&](Index other) {
          return at(pasts_, other).invalid == past.invalid && at(pasts_, other).found == past.found;
        });
    if (same == settled.begin() + static_cast<std::ptrdiff_t>(kept)) {
      settled[kept++] = settled[i];
      continue;
    }
    past.same = *same;
    ++at(pasts_, *same).riders;
    releasePast(settled[i]);
  }
  settled.resize(kept);
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
