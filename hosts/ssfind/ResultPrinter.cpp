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

std::optional<std::timespec> modificationTime(const MatchDetails &details) {
  return details.status ? std::optional(details.status->modified) : std::nullopt;
}

} // namespace

void ResultPrinter::print(std::string &out, std::string_view path,
                          const MatchDetails &details) const {
  if (format_ == Format::Json) {
    appendJson(out, path, details);
    return;
  }
  if (format_ == Format::Long)
    appendColumns(out, details);
  appendPath(out, path);
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
  appendJsonTime(out, modificationTime(details));
  if (hasShootingDate_) {
    out += ",\"taken\":";
    appendJsonTime(out, details.taken);
  }
  out += "}\n";
}

/// A size of more than twelve digits shifts the rest of its line.
void ResultPrinter::appendColumns(std::string &out, const MatchDetails &details) const {
  constexpr std::size_t sizeWidth = 12;
  const std::string size = details.status ? std::to_string(details.status->size) : "-";
  out.append(sizeWidth - std::min(sizeWidth, size.size()), ' ').append(size).append("  ");
  appendTimeColumn(out, modificationTime(details));
  if (hasShootingDate_)
    appendTimeColumn(out, details.taken);
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
