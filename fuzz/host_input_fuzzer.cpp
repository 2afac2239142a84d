// Passes any bytes to the readers of ssfind: ranges of dates, lists of paths, arguments, the table
// of mounts, and names to show.
//
// An input is a reader (one byte), a choice for it (one byte), and the bytes themselves.

#include "hosts/ssfind/DateRange.h"
#include "hosts/ssfind/JsonText.h"
#include "hosts/ssfind/MarkedText.h"
#include "hosts/ssfind/Mounts.h"
#include "hosts/ssfind/OptionParser.h"
#include "hosts/ssfind/PathList.h"
#include "hosts/ssfind/Paths.h"
#include "hosts/ssfind/Utf8.h"
#include "hosts/ssfind/VisibleText.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <ctime>
#include <fcntl.h>
#include <regex.h>
#include <string>
#include <unistd.h>
#include <vector>

namespace searchsystem {

namespace {

using namespace ssfind;

void require(bool holds) {
  if (!holds)
    std::abort();
}

/// Collects reports, in place of standard error.
std::string reported;

} // namespace

StandardError::StandardError(bool /*isTelling*/) : showsProgress_(false) {}
void StandardError::write(std::string_view lines) { reported += lines; }
void StandardError::report(std::string_view message) { write(programMessage(message) + '\n'); }
void StandardError::reportFailure(std::string_view path, int /*error*/,
                                  std::string_view /*addition*/) {
  report(path);
}
void StandardError::showProgress(std::string_view /*line*/, Clock::time_point /*now*/) {
  isShowing_ = showsProgress_;
}
void StandardError::clearProgress() {}
std::string ssfind::programMessage(std::string_view message) {
  return std::string("ssfind: ").append(message);
}

namespace {

void setTimeZone(std::uint8_t choice) {
  static std::array<char[48], 4> zones{"TZ=UTC0", "TZ=CET-1CEST,M3.5.0,M10.5.0/3",
                                       "TZ=BRT3BRST,M11.1.0/0,M2.3.0/0",
                                       "TZ=<+1030>-10:30<+11>-11,M10.1.0,M4.1.0"};
  putenv(zones[choice % zones.size()]);
  tzset();
}

bool hasFormOfRange(const std::string &text) {
  static const regex_t form = [] {
    const std::string date = "[0-9]{4}(-[0-9]{2}(-[0-9]{2}(T[0-9]{2}:[0-9]{2}(:[0-9]{2})?)?)?)?";
    regex_t regex{};
    const std::string range =
        "^(" + date + "|" + date + "\\.\\.|\\.\\." + date + "|" + date + "\\.\\." + date + ")$";
    require(regcomp(&regex, range.c_str(), REG_EXTENDED | REG_NOSUB) == 0);
    return regex;
  }();
  return text.find('\0') == text.npos && regexec(&form, text.c_str(), 0, nullptr, 0) == 0;
}

/// The local time of a date in an accepted range: its first second, or the first after it.
std::string clockOf(std::string_view date, bool isAfter) {
  std::array<int, 6> fields{1, 1, 1, 0, 0, 0};
  std::size_t last = 0;
  for (; !date.empty(); ++last) {
    fields[last] = std::atoi(std::string(date.substr(0, last == 0 ? 4 : 2)).c_str());
    date.remove_prefix(std::min<std::size_t>(date.size(), last == 0 ? 5 : 3));
  }
  fields[last - 1] += isAfter ? 1 : 0;
  std::tm clock{};
  clock.tm_year = fields[0] - 1900;
  clock.tm_mon = fields[1] - 1;
  clock.tm_mday = fields[2];
  clock.tm_hour = fields[3];
  clock.tm_min = fields[4];
  clock.tm_sec = fields[5];
  timegm(&clock);
  std::array<char, 40> text{};
  return {text.data(), std::strftime(text.data(), text.size(), "%Y-%m-%dT%H:%M:%S", &clock)};
}

/// The local time at `time`; it sorts as text, from the year 1000 on.
std::string clockAt(std::time_t time) {
  std::tm clock{};
  std::array<char, 40> text{};
  return {text.data(),
          std::strftime(text.data(), text.size(), "%Y-%m-%dT%H:%M:%S", localtime_r(&time, &clock))};
}

void testRange(const std::string &text) {
  constexpr std::int64_t now = 1711879200;
  const auto parsed = parseDateRange(text, now);
  if (const auto *error = std::get_if<TextError>(&parsed)) {
    require(!error->message.empty() && error->column <= text.size());
    const std::string shown = MarkedText::withMarkAt(text, error->column).text();
    require(std::count(shown.begin(), shown.end(), '\n') == 2 && shown.ends_with("^\n"));
    return;
  }
  const auto [start, end] = std::get<DateRange>(parsed);
  require(std::isfinite(start) && std::isfinite(end) && start <= end);
  if (!hasFormOfRange(text))
    return;
  const std::size_t dots = text.find("..");
  const std::string from = text.substr(0, dots);
  const std::string to = dots == text.npos ? text : text.substr(dots + 2);
  const auto isFarBack = [](const std::string &date) { return date < "1001" || date >= "9998"; };
  constexpr std::int64_t epoch = 978307200;
  constexpr int hour = 3600;
  if (!from.empty() && !isFarBack(from)) {
    const auto first = static_cast<std::int64_t>(std::ceil(start)) + epoch;
    require(static_cast<double>(first - epoch) > start);
    require(clockAt(first) >= clockOf(from, false));
    for (const int earlier : {1, hour / 2, hour})
      require(clockAt(first - earlier) < clockOf(from, false));
  }
  if (!to.empty() && !isFarBack(to)) {
    const auto next = static_cast<std::int64_t>(std::ceil(end)) + epoch;
    require(clockAt(next - 1) < clockOf(to, true));
    for (const int later : {0, hour / 2, hour})
      require(clockAt(next + later) >= clockOf(to, true));
  }
}

/// Puts the bytes on standard input in pieces, each of which is read by itself.
void putOnStandardInput(std::string_view bytes) {
  int ends[2];
  require(pipe2(ends, O_DIRECT) == 0);
  constexpr std::size_t pieces = 13;
  const std::size_t size = bytes.size() / pieces + 1;
  for (std::size_t i = 0; i < bytes.size(); i += size) {
    const std::string_view piece = bytes.substr(i, size);
    require(write(ends[1], piece.data(), piece.size()) == static_cast<ssize_t>(piece.size()));
  }
  close(ends[1]);
  require(dup2(ends[0], STDIN_FILENO) == STDIN_FILENO);
  close(ends[0]);
}

void testList(const std::string &text, char separator) {
  putOnStandardInput(text);
  StandardError errors(false);
  reported.clear();
  const auto paths = readPathList("-", separator, errors);
  const bool isReadable = separator == '\0' || text.find('\0') == text.npos;
  require(paths.has_value() == isReadable && reported.empty() == isReadable);
  if (!paths)
    return;
  std::vector<std::string> expected{""};
  for (const char c : text)
    if (c == separator)
      expected.emplace_back();
    else
      expected.back() += c;
  std::erase(expected, "");
  require(*paths == expected);
}

void testArguments(const std::string &text) {
  std::vector<std::string> arguments{"ssfind", ""};
  for (const char c : text)
    if (c == '\0' || c == '\n')
      arguments.emplace_back();
    else
      arguments.back() += c;
  std::vector<const char *> pointers;
  for (const std::string &argument : arguments)
    pointers.push_back(argument.c_str());
  const auto parsed = parseOptions(static_cast<int>(pointers.size()), pointers.data());
  if (const auto *error = std::get_if<UsageError>(&parsed)) {
    require(error->text.starts_with("ssfind: ") && error->text.ends_with(" --help'.\n"));
    require(isUtf8(error->text));
    require(std::none_of(error->text.begin(), error->text.end(), [](char c) {
      return c == '\x7f' || (c >= '\0' && c < ' ' && c != '\n');
    }));
  }
  if (const auto *options = std::get_if<Options>(&parsed)) {
    const Conditions &conditions = options->conditions;
    for (const auto &range : {conditions.modified, conditions.taken})
      require(!range || range->start <= range->end);
    require(options->list || !options->folders.empty());
    for (const std::string &folder : options->folders)
      require(folder == "." ||
              std::find(arguments.begin(), arguments.end(), folder) != arguments.end());
  }
}

void testMounts(const std::string &text) {
  std::string copy = text;
  std::FILE *const table = fmemopen(copy.data(), copy.size(), "r");
  if (table == nullptr)
    return;
  const std::vector<Mount> mounts = mountsOf(table);
  std::fclose(table);
  require(mounts.size() <=
          static_cast<std::size_t>(std::count(text.begin(), text.end(), '\n')) + 1);
  for (const Mount &mount : mounts)
    require(mount.path.starts_with('/') && !mount.fileSystem.empty());
  for (const char *const folder : {"/", "/home"}) {
    const std::vector<std::string> below = mountsBelow(folder, mounts);
    for (std::size_t i = 0; i < below.size(); ++i) {
      require(isBelow(below[i], folder));
      require(i == 0 || isBeforeInTree(below[i - 1], below[i]));
      require(std::any_of(mounts.begin(), mounts.end(),
                          [&](const Mount &mount) { return mount.path == below[i]; }));
    }
  }
}

void appendUtf8(std::string &text, unsigned code) {
  if (code < 0x80) {
    text += static_cast<char>(code);
  } else if (code < 0x800) {
    text += static_cast<char>(0xC0 | code >> 6);
    text += static_cast<char>(0x80 | (code & 0x3F));
  } else {
    text += static_cast<char>(0xE0 | code >> 12);
    text += static_cast<char>(0x80 | (code >> 6 & 0x3F));
    text += static_cast<char>(0x80 | (code & 0x3F));
  }
}

/// Undoes the escapes of either form: \n and its like, \", \\, \xff, \u{202e}, \u202e.
std::string unescaped(const std::string &text) {
  constexpr std::string_view letters = "bfnrt", characters = "\b\f\n\r\t";
  std::string plain;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] != '\\') {
      plain += text[i];
      continue;
    }
    const char kind = text[++i];
    const std::size_t letter = letters.find(kind);
    if (letter != letters.npos) {
      plain += characters[letter];
    } else if (kind == 'x') {
      plain += static_cast<char>(std::stoul(text.substr(i + 1, 2), nullptr, 16));
      i += 2;
    } else if (kind == 'u' && text[i + 1] == '{') {
      const std::size_t end = text.find('}', i);
      appendUtf8(plain, static_cast<unsigned>(std::stoul(text.substr(i + 2), nullptr, 16)));
      i = end;
    } else if (kind == 'u') {
      appendUtf8(plain, static_cast<unsigned>(std::stoul(text.substr(i + 1, 4), nullptr, 16)));
      i += 4;
    } else {
      plain += kind;
    }
  }
  return plain;
}

std::string decodedBase64(std::string_view text) {
  constexpr std::string_view digits =
      "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  require(text.size() % 4 == 0);
  std::string bytes;
  unsigned bits = 0;
  unsigned count = 0;
  for (const char c : text.substr(0, text.find('='))) {
    bits = bits << 6 | static_cast<unsigned>(digits.find(c));
    count += 6;
    if (count >= 8)
      bytes += static_cast<char>(bits >> (count -= 8));
  }
  return bytes;
}

/// No two names may look the same, and none may do anything to a terminal.
void testNames(const std::string &name) {
  std::string json;
  appendJsonName(json, name);
  const std::string shown = visible(name);
  for (const std::string &text : {json, shown}) {
    require(isUtf8(text));
    for (std::string_view rest = text; !rest.empty();) {
      const Utf8Character character = firstCharacter(rest);
      require(!isControlCharacter(character.code));
      rest.remove_prefix(character.length);
    }
  }
  require(unescaped(shown) == name);
  constexpr std::string_view bytes = "{\"bytes\":\"";
  if (json.starts_with(bytes))
    require(decodedBase64(json.substr(bytes.size(), json.size() - bytes.size() - 2)) == name);
  else
    require(unescaped(json.substr(1, json.size() - 2)) == name && isUtf8(name));
}

} // namespace

} // namespace searchsystem

using namespace searchsystem;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
  if (size < 2 || size > 2000)
    return 0;
  setTimeZone(data[1]);
  const std::string text(reinterpret_cast<const char *>(data + 2), size - 2);
  switch (data[0] % 5) {
  case 0:
    testRange(text);
    break;
  case 1:
    testList(text, data[1] % 2 == 0 ? '\n' : '\0');
    break;
  case 2:
    testArguments(text);
    break;
  case 3:
    testMounts(text);
    break;
  default:
    testNames(text);
  }
  return 0;
}
