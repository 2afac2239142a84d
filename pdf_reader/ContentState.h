#pragma once

#include "pdf_reader/HexString.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace searchsystem {

/// Whether a token is one of the operators of text that end operands: Tc, Tw, Tz, TL, Tf, Tr, Ts,
/// Tm, Tj and TJ.
[[nodiscard]] inline bool isTextOperator(std::string_view token) noexcept {
  return token.size() == 2 && token[0] == 'T' &&
         std::string_view("cwzLfrsmjJ").find(token[1]) != std::string_view::npos;
}

/// The state of a content stream's parse between two tokens.
///
/// An operator consumes all tokens that wait before it in the group, even an ET, which ends the
/// text only if no operator follows. So while tokens wait, others change the state, and an operator
/// returns it to the text. The end of the group drops the waiting tokens.
class ContentState {
public:
  enum class Place : std::uint8_t { outside, object, stream, text, stopped };
  enum class Effect : std::uint8_t { none, show, fail, stop };

  explicit ContentState(Place place = Place::outside) noexcept : place_(place) {}

  [[nodiscard]] Place place() const noexcept { return place_; }
  [[nodiscard]] bool isWaiting() const noexcept { return waiting_ != Waiting::none; }

  /// The hexadecimal string of the last `Effect::show`.
  [[nodiscard]] std::string_view shown() const noexcept { return string_; }

  /// Throws `std::bad_alloc`.
  Effect take(std::string_view token) {
    if (isWaiting() && isTextOperator(token)) {
      const bool isShown = waiting_ == Waiting::one && token == "Tj";
      place_ = Place::text;
      waiting_ = Waiting::none;
      return !isShown ? Effect::none : string_.empty() ? Effect::fail : Effect::show;
    }
    if (isWaiting()) {
      waiting_ = Waiting::more;
      move(token);
    } else if (place_ != Place::text || token == "ET") {
      move(token);
    } else if (!isTextOperator(token)) {
      waiting_ = Waiting::one;
      string_ = isHexString(token) ? token : std::string_view();
    }
    return place_ == Place::stopped && !isWaiting() ? Effect::stop : Effect::none;
  }

  Effect endGroup() noexcept {
    waiting_ = Waiting::none;
    return place_ == Place::stopped ? Effect::stop : Effect::none;
  }

  friend bool operator==(const ContentState &a, const ContentState &b) noexcept {
    return a.place_ == b.place_ && a.waiting_ == b.waiting_ &&
           (a.waiting_ != Waiting::one || a.string_ == b.string_);
  }

private:
  enum class Waiting : std::uint8_t { none, one, more };

  void move(std::string_view token) noexcept {
    switch (place_) {
    case Place::outside:
      place_ = token == "obj" ? Place::object : place_;
      break;
    case Place::object:
      place_ = token == "endobj" ? Place::outside : token == "stream" ? Place::stream : place_;
      break;
    case Place::stream:
      place_ = token == "endstream" ? Place::object : token == "BT" ? Place::text : Place::stopped;
      break;
    case Place::text:
      place_ = token == "ET" ? Place::stream : place_;
      break;
    case Place::stopped:
      break;
    }
  }

  Place place_;
  Waiting waiting_ = Waiting::none;
  /// The only waiting token if that is a hexadecimal string, else empty.
  std::string string_;
};

} // namespace searchsystem
