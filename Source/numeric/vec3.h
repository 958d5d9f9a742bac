// 3-vectors and 3 by 3 matrices: coordinates, axes, rotations.
#pragma once

#include <array>
#include <cmath>

namespace quintor {

using Vec3 = std::array<double, 3>;
using Mat3 = std::array<std::array<double, 3>, 3>;  // m[row][col]

// Kept in their own namespace so that they meet no other module's helpers;
// the sources that do geometry bring them in with a using-directive.
namespace geom {

inline Vec3 operator+(const Vec3& a, const Vec3& b) { return {a[0] + b[0], a[1] + b[1], a[2] + b[2]}; }
inline Vec3 operator-(const Vec3& a, const Vec3& b) { return {a[0] - b[0], a[1] - b[1], a[2] - b[2]}; }
inline Vec3 operator*(double s, const Vec3& a) { return {s * a[0], s * a[1], s * a[2]}; }

inline double Dot(const Vec3& a, const Vec3& b) { return a[0] * b[0] + a[1] * b[1] + a[2] * b[2]; }
inline Vec3 Cross(const Vec3& a, const Vec3& b) {
  return {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
}
inline double Norm(const Vec3& a) { return std::sqrt(Dot(a, a)); }

// A zero vector stays zero rather than turning into NaNs.
inline Vec3 Normalised(const Vec3& a) {
  const double n = Norm(a);
  return n > 0.0 ? (1.0 / n) * a : Vec3{0.0, 0.0, 0.0};
}

inline Vec3 operator*(const Mat3& m, const Vec3& v) { return {Dot(m[0], v), Dot(m[1], v), Dot(m[2], v)}; }

inline Mat3 operator*(const Mat3& a, const Mat3& b) {
  Mat3 c{};
  for (int i = 0; i < 3; ++i)
    for (int j = 0; j < 3; ++j)
      for (int k = 0; k < 3; ++k) c[i][j] += a[i][k] * b[k][j];
  return c;
}

inline Mat3 Transposed(const Mat3& m) {
  return Mat3{Vec3{m[0][0], m[1][0], m[2][0]}, Vec3{m[0][1], m[1][1], m[2][1]},
              Vec3{m[0][2], m[1][2], m[2][2]}};
}

inline Mat3 UnitMatrix() { return Mat3{Vec3{1, 0, 0}, Vec3{0, 1, 0}, Vec3{0, 0, 1}}; }
inline Mat3 DiagonalMatrix(double a, double b, double c) { return Mat3{Vec3{a, 0, 0}, Vec3{0, b, 0}, Vec3{0, 0, c}}; }

// Active rotations by `angle` radians, counter-clockwise seen from the tip of the axis.
inline Mat3 RotationX(double angle) {
  const double c = std::cos(angle), s = std::sin(angle);
  return Mat3{Vec3{1, 0, 0}, Vec3{0, c, -s}, Vec3{0, s, c}};
}
inline Mat3 RotationY(double angle) {
  const double c = std::cos(angle), s = std::sin(angle);
  return Mat3{Vec3{c, 0, s}, Vec3{0, 1, 0}, Vec3{-s, 0, c}};
}
inline Mat3 RotationZ(double angle) {
  const double c = std::cos(angle), s = std::sin(angle);
  return Mat3{Vec3{c, -s, 0}, Vec3{s, c, 0}, Vec3{0, 0, 1}};
}

// Column k of a matrix whose columns are axes.
inline Vec3 Column(const Mat3& m, int k) { return {m[0][k], m[1][k], m[2][k]}; }
inline void SetColumn(Mat3& m, int k, const Vec3& v) {
  for (int r = 0; r < 3; ++r) m[r][k] = v[r];
}

}  // namespace geom
}  // namespace quintor
