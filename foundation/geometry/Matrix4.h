#pragma once

namespace vellum {

/// A transform; sixteen elements, column by column, as glLoadMatrix reads them:
///
///     | e0  e4  e8   e12 |
///     | e1  e5  e9   e13 |      12, 13, 14: translation
///     | e2  e6  e10  e14 |
///     | e3  e7  e11  e15 |
template <class T>
struct Matrix4 {
    T e[16];

    static constexpr Matrix4 identity() { return {{1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1}}; }
};

static_assert(sizeof(Matrix4<float>) == 64 && sizeof(Matrix4<double>) == 128, "elements without gaps");

/// The matrix product: the result applies `b` first, then `a`.
template <class T>
constexpr Matrix4<T> operator*(Matrix4<T> const& a, Matrix4<T> const& b) {
    Matrix4<T> product{};
    for (int column = 0; column < 4; ++column) {
        for (int row = 0; row < 4; ++row) {
            T sum = a.e[row] * b.e[4 * column];
            for (int k = 1; k < 4; ++k) {
                sum += a.e[4 * k + row] * b.e[4 * column + k];
            }
            product.e[4 * column + row] = sum;
        }
    }
    return product;
}

}  // namespace vellum
