#include "hosts/ssfind/ResultPrinter.h"

#include "hosts/ssfind/JsonText.h"
#include "hosts/ssfind/TimeText.h"
#include "hosts/ssfind/VisibleText.h"

namespace ssfind {

namespace {

constexpr std::string_view folderColor = "\x1b[36m";
constexpr std::string_view plainColor = "\x1b[0m";

void appendJson(std::string &out, std::string_view path, const std::optional<EntryStatus> &status) {
  out += "{\"path\":";
  appendJsonName(out, path);
  out += ",\"size\":";
  out += status ? std::to_string(status->size) : "null";
  out += ",\"modified\":";
  const std::size_t start = out.size();
  if (status && appendTimestamp(out, status->modified))
    out.insert(start, 1, '"') += '"';
  else
    out += "null";
  out += '}';
}

/// Size and date in columns; a size of more than twelve digits moves the rest of its line.
void appendColumns(std::string &out, const std::optional<EntryStatus> &status) {
  constexpr std::size_t sizeWidth = 12;
  constexpr std::string_view noDate = "                  -";
  const std::string size = status ? std::to_string(status->size) : "-";
  out.append(sizeWidth - std::min(sizeWidth, size.size()), ' ').append(size).append("  ");
  if (!status || !appendClockTime(out, status->modified))
    out += noDate;
  out += "  ";
}

} // namespace

void ResultPrinter::print(std::string &out, std::string_view path,
                          const std::optional<EntryStatus> &status) const {
  if (format_ == Format::Json) {
    appendJson(out, path, status);
    out += '\n';
    return;
  }
  if (format_ == Format::Long)
    appendColumns(out, status);
  appendPath(out, path);
  out += separator_;
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

} // namespace ssfind
