#include "hosts/ssfind/ResultPrinter.h"

#include "hosts/ssfind/JsonText.h"
#include "hosts/ssfind/TimeText.h"
#include "hosts/ssfind/VisibleText.h"

#include <algorithm>

namespace searchsystem::ssfind {

namespace {

constexpr std::string_view folderColor = "\x1b[36m";
constexpr std::string_view plainColor = "\x1b[0m";

void appendJsonTime(std::string &out, const std::optional<std::timespec> &time) {
  const std::size_t start = out.size();
  if (time && appendTimestamp(out, *time))
    out.insert(start, 1, '"') += '"';
  else
    out += "null";
}

void appendTimeColumn(std::string &out, const std::optional<std::timespec> &time) {
  constexpr std::string_view noDate = "                  -";
  if (!time || !appendClockTime(out, *time))
    out += noDate;
  out += "  ";
}

void appendJsonText(std::string &out, const std::optional<std::string> &text) {
  if (text)
    appendJsonName(out, *text);
  else
    out += "null";
}

/// Maker and model in one, as makers often begin the model with their name.
std::string cameraOf(const PhotographDetails &photograph) {
  const std::string maker = photograph.maker.value_or("");
  std::string model = photograph.model.value_or("");
  if (model.starts_with(maker.substr(0, maker.find(' '))))
    return model.empty() ? "-" : model;
  return model.empty() ? maker : maker + ' ' + model;
}

/// A longer one shifts the rest of its line.
void appendCameraColumn(std::string &out, const PhotographDetails &photograph) {
  constexpr std::size_t width = 24;
  const std::string text = visible(cameraOf(photograph));
  const auto isCharacter = [](char c) { return (static_cast<unsigned char>(c) & 0xC0) != 0x80; };
  const auto length = static_cast<std::size_t>(std::ranges::count_if(text, isCharacter));
  out.append(text).append(width - std::min(width, length) + 2, ' ');
}

} // namespace

void ResultPrinter::print(std::string &out, std::string_view path,
                          const MatchDetails &details) const {
  if (format_ == Format::Json) {
    appendJson(out, path, details);
    return;
  }
  if (template_) {
    template_->append(out, path, details, isForTerminal_);
  } else {
    if (format_ == Format::Long)
      appendColumns(out, details);
    appendPath(out, path);
  }
  out += separator_;
}

void ResultPrinter::printUnread(std::string &out, std::string_view path,
                                std::string_view reason) const {
  constexpr std::size_t width = 20;
  out.append(reason).append(width - std::min(width, reason.size()), ' ');
  appendPath(out, path);
  out += separator_;
}

void ResultPrinter::appendJson(std::string &out, std::string_view path,
                               const MatchDetails &details) const {
  out += "{\"path\":";
  appendJsonName(out, path);
  out += ",\"size\":";
  out += details.status ? std::to_string(details.status->size) : "null";
  out += ",\"modified\":";
  appendJsonTime(out, details.modified());
  if (hasShootingDate_) {
    out += ",\"taken\":";
    appendJsonTime(out, details.photograph.taken);
  }
  if (hasCamera_) {
    out += ",\"maker\":";
    appendJsonText(out, details.photograph.maker);
    out += ",\"model\":";
    appendJsonText(out, details.photograph.model);
  }
  out += "}\n";
}

/// A size of more than twelve digits shifts the rest of its line.
void ResultPrinter::appendColumns(std::string &out, const MatchDetails &details) const {
  constexpr std::size_t sizeWidth = 12;
  const std::string size = details.status ? std::to_string(details.status->size) : "-";
  out.append(sizeWidth - std::min(sizeWidth, size.size()), ' ').append(size).append("  ");
  appendTimeColumn(out, details.modified());
  if (hasShootingDate_)
    appendTimeColumn(out, details.photograph.taken);
  if (hasCamera_)
    appendCameraColumn(out, details.photograph);
}

void ResultPrinter::appendPath(std::string &out, std::string_view path) const {
  if (!hasColors_) {
    appendName(out, path);
    return;
  }
  const std::size_t folderEnd = path.rfind('/') + 1;
  if (folderEnd != 0) {
    out += folderColor;
    appendName(out, path.substr(0, folderEnd));
    out += plainColor;
  }
  appendName(out, path.substr(folderEnd));
}

void ResultPrinter::appendName(std::string &out, std::string_view name) const {
  if (isForTerminal_)
    appendVisible(out, name);
  else
    out += name;
}

} // namespace searchsystem::ssfind
