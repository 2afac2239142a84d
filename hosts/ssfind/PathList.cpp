#include "hosts/ssfind/PathList.h"

#include "hosts/ssfind/Interrupt.h"
#include "hosts/ssfind/VisibleText.h"

#include <array>
#include <cerrno>
#include <fcntl.h>
#include <poll.h>
#include <string_view>
#include <unistd.h>

namespace searchsystem::ssfind {

namespace {

/// A descriptor for reading, closed at the end unless it is standard input.
class Source {
public:
  explicit Source(const std::string &file)
      : descriptor_(file == "-" ? STDIN_FILENO : open(file.c_str(), O_RDONLY | O_CLOEXEC)) {}
  Source(const Source &) = delete;
  Source &operator=(const Source &) = delete;
  ~Source() {
    if (descriptor_ > STDIN_FILENO)
      close(descriptor_);
  }

  [[nodiscard]] bool isOpen() const { return descriptor_ >= 0; }

  /// As read(2), but fails with EINTR also if an interrupt came just before.
  ssize_t read(char *bytes, std::size_t size) const {
    constexpr int milliseconds = 100;
    pollfd readable{descriptor_, POLLIN, 0};
    for (;;) {
      if (wasInterrupted()) {
        errno = EINTR;
        return -1;
      }
      const int ready = poll(&readable, 1, milliseconds);
      if (ready > 0)
        return ::read(descriptor_, bytes, size);
      if (ready < 0 && errno != EINTR)
        return -1;
    }
  }

private:
  const int descriptor_;
};

/// Splits the input into paths.
class PathSplitter {
public:
  explicit PathSplitter(char separator) : separator_(separator) {}

  void add(std::string_view bytes) {
    for (std::size_t end; (end = bytes.find(separator_)) != bytes.npos;) {
      unfinished_ += bytes.substr(0, end);
      finishPath();
      bytes.remove_prefix(end + 1);
    }
    unfinished_ += bytes;
  }

  void finishPath() {
    if (!unfinished_.empty())
      paths_.push_back(unfinished_);
    unfinished_.clear();
  }

  [[nodiscard]] std::vector<std::string> &paths() { return paths_; }

private:
  const char separator_;
  std::string unfinished_;
  std::vector<std::string> paths_;
};

} // namespace

std::optional<std::vector<std::string>> readPathList(const std::string &file, char separator,
                                                     StandardError &errors) {
  const std::string name = file == "-" ? "standard input" : file;
  const auto fail = [&](int error) {
    if (!wasInterrupted())
      errors.reportFailure(name, error);
    return std::nullopt;
  };
  const Source source(file);
  if (!source.isOpen())
    return fail(errno);
  PathSplitter splitter(separator);
  std::array<char, 1 << 16> bytes{};
  while (const ssize_t size = source.read(bytes.data(), bytes.size())) {
    if (size < 0 && (errno != EINTR || wasInterrupted()))
      return fail(errno);
    const std::string_view part(bytes.data(), size < 0 ? 0 : static_cast<std::size_t>(size));
    if (separator != '\0' && part.find('\0') != part.npos) {
      errors.report(visible(name) + ": paths are separated by NUL, which needs -0");
      return std::nullopt;
    }
    splitter.add(part);
  }
  splitter.finishPath();
  return std::move(splitter.paths());
}

} // namespace searchsystem::ssfind
