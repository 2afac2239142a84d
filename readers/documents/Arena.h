#pragma once

#include <cstddef>
#include <memory>
#include <new>
#include <span>
#include <string_view>
#include <type_traits>
#include <vector>

namespace searchsystem {

/// Memory that is freed all at once, for objects without destructors. What it gave stays valid
/// until `clear` or its end. Throws `std::bad_alloc`, also where more than `most` bytes would be in
/// use.
class Arena {
public:
  static constexpr std::size_t most = std::size_t{256} << 20;

  Arena() = default;
  Arena(const Arena &) = delete;
  Arena &operator=(const Arena &) = delete;

  [[nodiscard]] void *allocate(std::size_t size) {
    size = (size + alignment - 1) / alignment * alignment;
    if (size > static_cast<std::size_t>(end_ - next_))
      addBlock(size);
    void *const given = next_;
    next_ += size;
    return given;
  }

  [[nodiscard]] std::string_view copy(std::string_view bytes);

  template <typename T> [[nodiscard]] T *copy(std::span<const T> items) {
    static_assert(std::is_trivially_copyable_v<T> && alignof(T) <= alignment);
    T *const room = static_cast<T *>(allocate(items.size_bytes()));
    std::uninitialized_copy(items.begin(), items.end(), room);
    return room;
  }

  /// Frees everything but the first block.
  void clear() noexcept;

private:
  static constexpr std::size_t alignment = 8;
  static constexpr std::size_t firstBlock = 16384;
  static constexpr std::size_t largestBlock = std::size_t{1} << 20;

  struct Block {
    std::unique_ptr<char[]> bytes;
    std::size_t size;
  };

  void addBlock(std::size_t size);

  std::vector<Block> blocks_;
  std::size_t used_ = 0;
  char *next_ = nullptr;
  char *end_ = nullptr;
};

} // namespace searchsystem
