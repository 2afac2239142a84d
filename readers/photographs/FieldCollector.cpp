#include "readers/photographs/FieldCollector.h"

#include "readers/photographs/ComparableText.h"

namespace searchsystem {

namespace {

void noteFirst(std::array<std::string, 2> &camera, FieldRole role, const std::string &text) {
  if (role == FieldRole::other)
    return;
  std::string &place = camera[static_cast<std::size_t>(role)];
  if (place.empty())
    place = text;
}

} // namespace

std::string FieldCollector::handOn(std::string_view name, std::string_view text) {
  if (isStopped_ || isTooLarge_)
    return {};
  std::string comparable = comparableText(text);
  if (comparable.empty())
    return {};
  std::string key(name);
  key += '\0';
  key += comparable;
  if (!known_.insert(std::move(key)).second)
    return comparable;
  textBytes_ += name.size() + comparable.size();
  isTooLarge_ = textBytes_ > mostTextBytes;
  if (!isTooLarge_)
    isStopped_ = !sink_.takeField(name, comparable);
  if (isTooLarge_ || isStopped_)
    budget_.end();
  return comparable;
}

void FieldCollector::add(std::string_view name, std::string_view text, FieldRole role) {
  noteFirst(camera_, role, handOn(name, text));
}

void FieldCollector::addSecondary(std::string_view name, std::string_view text, FieldRole role) {
  noteFirst(secondaryCamera_, role, handOn(name, text));
}

void FieldCollector::addDate(DateSource source,
                             const std::optional<PhotographDate> &date) noexcept {
  if (!date || source >= dateSource_)
    return;
  dateSource_ = source;
  date_ = *date;
}

void FieldCollector::finish() {
  if (isStopped_)
    return;
  if (dateSource_ != DateSource::none)
    sink_.takeDate(date_);
  for (std::size_t i = 0; i < camera_.size(); ++i)
    if (camera_[i].empty())
      camera_[i] = secondaryCamera_[i];
  if (!camera_[0].empty() || !camera_[1].empty())
    sink_.takeCamera(camera_[0], camera_[1]);
}

} // namespace searchsystem
