#pragma once

#include <optional>
#include <string>
#include <sys/types.h>
#include <vector>

namespace searchsystem::ssfind {

/// A running command. It is waited for by its number, since other libraries may have children too.
/// Where it still runs when this ends, it is killed.
class Child {
public:
  enum class Streams {
    /// Those of this process.
    Shared,
    /// No input, and its output and errors are kept until its end.
    Kept
  };

  /// Starts a program, found as a shell finds it. None, with errno set, if it cannot be started.
  [[nodiscard]] static std::optional<Child> start(const std::vector<std::string> &arguments,
                                                  Streams streams);

  Child(Child &&other) noexcept;
  Child &operator=(Child &&other) noexcept;
  ~Child();

  /// Readable once it has ended; -1 where the system has no such descriptor.
  [[nodiscard]] int descriptor() const noexcept { return descriptor_; }

  /// How it has ended, as in wait(2); none while it runs. Ask until it is there.
  [[nodiscard]] std::optional<int> status() noexcept;

  /// What it has written, if it was kept.
  [[nodiscard]] std::string output() const { return contentOf(output_); }
  [[nodiscard]] std::string errors() const { return contentOf(errors_); }

private:
  Child() = default;

  static std::string contentOf(int file);
  void swap(Child &other) noexcept;

  pid_t process_ = -1;
  /// Whom signals are for, as in kill(2): the process, or its group.
  pid_t target_ = -1;
  int descriptor_ = -1;
  int output_ = -1;
  int errors_ = -1;
};

} // namespace searchsystem::ssfind
