// Points, sizes and rectangles in points (1/72 inch), as the platform's NSPoint, NSSize, NSRect.
#pragma once

namespace vl::ns {

struct Point {
  double x = 0;
  double y = 0;
  constexpr bool operator==(const Point &) const = default;
};

struct Size {
  double width = 0;
  double height = 0;
  constexpr bool operator==(const Size &) const = default;
};

struct Rect {
  Point origin;
  Size size;
  constexpr double minX() const { return origin.x; }
  constexpr double minY() const { return origin.y; }
  constexpr double maxX() const { return origin.x + size.width; }
  constexpr double maxY() const { return origin.y + size.height; }
  constexpr double width() const { return size.width; }
  constexpr double height() const { return size.height; }
  constexpr bool operator==(const Rect &) const = default;
};

constexpr Point MakePoint(double x, double y) {
  return Point{x, y};
}
constexpr Size MakeSize(double w, double h) {
  return Size{w, h};
}
constexpr Rect MakeRect(double x, double y, double w, double h) {
  return Rect{{x, y}, {w, h}};
}

} // namespace vl::ns
