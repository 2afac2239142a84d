#pragma once

namespace searchsystem {

/// A transformation of coordinates (ISO 32000-2, 8.3.4): x' = a x + c y + e, y' = b x + d y + f.
struct Matrix {
  double a = 1, b = 0, c = 0, d = 1, e = 0, f = 0;

  /// First this one, then the other.
  [[nodiscard]] Matrix then(const Matrix &other) const noexcept {
    return {a * other.a + b * other.c,           a * other.b + b * other.d,
            c * other.a + d * other.c,           c * other.b + d * other.d,
            e * other.a + f * other.c + other.e, e * other.b + f * other.d + other.f};
  }
  /// Moves the origin, in the coordinates that are transformed.
  [[nodiscard]] Matrix movedBy(double x, double y) const noexcept {
    return {a, b, c, d, e + x * a + y * c, f + x * b + y * d};
  }
};

} // namespace searchsystem
