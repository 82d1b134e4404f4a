#pragma once
// 4x4 matrices of doubles, stored by rows. A point is a row vector multiplied from the left, so
// translation lies in the last row, and a chain A * B applies A first.

#include <cmath>
#include <cstdint>
#include <utility>

namespace lattica {

struct Matrix4 {
  double m[4][4];

  static Matrix4 identity() {
    Matrix4 r{};
    for (int i = 0; i < 4; ++i) r.m[i][i] = 1.0;
    return r;
  }
  static Matrix4 translation(double x, double y, double z) {
    Matrix4 r = identity();
    r.m[3][0] = x;
    r.m[3][1] = y;
    r.m[3][2] = z;
    return r;
  }
  // Rx = [1 0 0; 0 c s; 0 -s c]
  static Matrix4 rotationX(double radians) {
    Matrix4 r = identity();
    const double c = std::cos(radians), s = std::sin(radians);
    r.m[1][1] = c;
    r.m[1][2] = s;
    r.m[2][1] = -s;
    r.m[2][2] = c;
    return r;
  }
  // Ry = [c 0 -s; 0 1 0; s 0 c]
  static Matrix4 rotationY(double radians) {
    Matrix4 r = identity();
    const double c = std::cos(radians), s = std::sin(radians);
    r.m[0][0] = c;
    r.m[0][2] = -s;
    r.m[2][0] = s;
    r.m[2][2] = c;
    return r;
  }
  // Rz = [c s 0; -s c 0; 0 0 1]
  static Matrix4 rotationZ(double radians) {
    Matrix4 r = identity();
    const double c = std::cos(radians), s = std::sin(radians);
    r.m[0][0] = c;
    r.m[0][1] = s;
    r.m[1][0] = -s;
    r.m[1][1] = c;
    return r;
  }
};

// a * b: a applies first.
inline Matrix4 operator*(const Matrix4& a, const Matrix4& b) {
  Matrix4 r{};
  for (int i = 0; i < 4; ++i) {
    for (int j = 0; j < 4; ++j) {
      double sum = 0.0;
      for (int k = 0; k < 4; ++k) sum += a.m[i][k] * b.m[k][j];
      r.m[i][j] = sum;
    }
  }
  return r;
}

// out[j] = sum over i of p[i] * M[i][j].
inline void transformPoint(const double p[4], const Matrix4& matrix, double out[4]) {
  double r[4];
  for (int j = 0; j < 4; ++j) {
    r[j] = p[0] * matrix.m[0][j] + p[1] * matrix.m[1][j] + p[2] * matrix.m[2][j] +
           p[3] * matrix.m[3][j];
  }
  for (int j = 0; j < 4; ++j) out[j] = r[j];
}

// Full inverse by Gauss-Jordan elimination with partial pivoting. False when singular.
inline bool invert(const Matrix4& matrix, Matrix4* inverse) {
  double a[4][8];
  for (int i = 0; i < 4; ++i) {
    for (int j = 0; j < 4; ++j) {
      a[i][j] = matrix.m[i][j];
      a[i][j + 4] = i == j ? 1.0 : 0.0;
    }
  }
  for (int col = 0; col < 4; ++col) {
    int pivot = col;
    for (int row = col + 1; row < 4; ++row) {
      if (std::fabs(a[row][col]) > std::fabs(a[pivot][col])) pivot = row;
    }
    if (a[pivot][col] == 0.0) return false;
    if (pivot != col) {
      for (int j = 0; j < 8; ++j) std::swap(a[pivot][j], a[col][j]);
    }
    const double scale = a[col][col];
    for (int j = 0; j < 8; ++j) a[col][j] /= scale;
    for (int row = 0; row < 4; ++row) {
      if (row == col) continue;
      const double factor = a[row][col];
      if (factor == 0.0) continue;
      for (int j = 0; j < 8; ++j) a[row][j] -= factor * a[col][j];
    }
  }
  for (int i = 0; i < 4; ++i) {
    for (int j = 0; j < 4; ++j) inverse->m[i][j] = a[i][j + 4];
  }
  return true;
}

}  // namespace lattica
