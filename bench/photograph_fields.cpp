// Prints what the photograph reader finds. The names of the files come on standard input, each
// ended by a NUL; for each a line of JSON is printed: the fields as pairs of name and text, date,
// maker and model where there are such, and the number of the reason if the file was not read. A
// file of the same name with `.xmp` behind it, or in place of its extension, is its sidecar.

#include "readers/photographs/PhotographFields.h"

#include <array>
#include <cstdio>
#include <fcntl.h>
#include <iostream>
#include <memory>
#include <string>
#include <string_view>
#include <unistd.h>

namespace {

using namespace searchsystem;

std::string quoted(std::string_view text) {
  std::string result = "\"";
  for (const char c : text) {
    std::array<char, 8> escape;
    if (c == '"' || c == '\\')
      result.append({'\\', c});
    else if (static_cast<unsigned char>(c) < ' ')
      result.append(escape.data(), static_cast<std::size_t>(std::snprintf(
                                       escape.data(), escape.size(), "\\u%04x", unsigned(c))));
    else
      result += c;
  }
  return result += '"';
}

class JSONSink final : public PhotographSink {
public:
  bool takeField(std::string_view name, std::string_view text) override {
    fields += (fields.empty() ? "[" : ", [") + quoted(name) + ", " + quoted(text) + "]";
    return true;
  }
  void takeDate(const PhotographDate &date) override {
    std::array<char, 80> text;
    std::snprintf(text.data(), text.size(), "%04d:%02d:%02d %02d:%02d:%02d", date.year, date.month,
                  date.day, date.hour, date.minute, date.second);
    others += ", \"date\": " + quoted(text.data());
  }
  void takeCamera(std::string_view maker, std::string_view model) override {
    others += ", \"maker\": " + quoted(maker) + ", \"model\": " + quoted(model);
  }

  std::string fields, others;
};

/// A file that is open as long as this is alive.
class OpenFile {
public:
  explicit OpenFile(const std::string &path)
      : descriptor_(open(path.c_str(), O_RDONLY | O_CLOEXEC)) {
    if (descriptor_ >= 0)
      source_ = std::make_unique<FileSource>(descriptor_);
  }
  ~OpenFile() {
    if (descriptor_ >= 0)
      close(descriptor_);
  }
  OpenFile(const OpenFile &) = delete;
  OpenFile &operator=(const OpenFile &) = delete;

  [[nodiscard]] ByteSource *source() const noexcept { return source_.get(); }

private:
  int descriptor_;
  std::unique_ptr<FileSource> source_;
};

} // namespace

int main() {
  for (std::string path; std::getline(std::cin, path, '\0');) {
    const OpenFile file(path);
    const OpenFile beside(path + ".xmp");
    const OpenFile instead(path.substr(0, path.rfind('.')) + ".xmp");
    JSONSink sink;
    auto reason = UnreadReason::cannotBeOpened;
    if (file.source() != nullptr)
      reason = readPhotograph(
          *file.source(), beside.source() != nullptr ? beside.source() : instead.source(), sink);
    std::cout << "{\"path\": " << quoted(path) << ", \"reason\": " << static_cast<int>(reason)
              << ", \"fields\": [" << sink.fields << "]" << sink.others << "}\n";
  }
  return std::cout.flush() ? 0 : 1;
}
