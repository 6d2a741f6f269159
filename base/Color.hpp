#pragma once

namespace tav {

/// A colour of the sRGB space: red, green, blue and opacity, each from 0 to 1. A value.
class Color {
  public:
    constexpr Color(double redPart, double greenPart, double bluePart, double alphaPart = 1)
        : red(redPart), green(greenPart), blue(bluePart), alpha(alphaPart) {}

    [[nodiscard]] static constexpr Color blackColor() { return {0, 0, 0}; }
    [[nodiscard]] static constexpr Color blueColor() { return {0, 0, 1}; }

    friend constexpr bool operator==(const Color&, const Color&) = default;

    double red;
    double green;
    double blue;
    double alpha; ///< 1 is opaque.
};

} // namespace tav
