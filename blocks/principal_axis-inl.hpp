// Sums, means and the principal axis of sets of texels, one block a lane. The axis is found by power iteration on the
// covariance matrix (Golub and Van Loan, Matrix Computations, section 7.3): few steps suffice, because only directions
// with close eigenvalues are slow to part, and between those either will do.
#if defined(BLOCKS_PRINCIPAL_AXIS_INL_HPP) == defined(HWY_TARGET_TOGGLE)
#ifdef BLOCKS_PRINCIPAL_AXIS_INL_HPP
#undef BLOCKS_PRINCIPAL_AXIS_INL_HPP
#else
#define BLOCKS_PRINCIPAL_AXIS_INL_HPP
#endif

#include "blocks/lanes-inl.hpp"

HWY_BEFORE_NAMESPACE();
namespace blocks::HWY_NAMESPACE {

/// Number of entries on and above the diagonal of a symmetric matrix.
constexpr std::size_t triangle(std::size_t side) {
    return side * (side + 1) / 2;
}

/// Count, sums and sums of products of texel channels. Products are in row order of the upper triangle.
template <std::size_t C>
struct MOMENTS {
    V count;
    V sum[C];
    V product[triangle(C)];

    HWY_INLINE static MOMENTS none() {
        MOMENTS m;
        m.count = zero();
        for (auto& s : m.sum)
            s = zero();
        for (auto& p : m.product)
            p = zero();
        return m;
    }
};

/// Sums of squared deviations from the mean: the covariance matrix times the count, upper triangle in row order.
template <std::size_t C>
HWY_INLINE void scatter_matrix(MOMENTS<C> const& m, V (&matrix)[triangle(C)]) {
    V const inverse = hn::Div(set(1.0f), hn::Max(m.count, set(1.0f)));
    std::size_t k = 0;
    for (std::size_t i = 0; i < C; ++i) {
        V const mean = hn::Mul(m.sum[i], inverse);
        for (std::size_t j = i; j < C; ++j, ++k)
            matrix[k] = hn::Sub(m.product[k], hn::Mul(mean, m.sum[j]));
    }
}

template <std::size_t C>
HWY_INLINE void multiply(V const (&matrix)[triangle(C)], V const (&in)[C], V (&out)[C]) {
    for (std::size_t i = 0; i < C; ++i)
        out[i] = zero();
    std::size_t k = 0;
    for (std::size_t i = 0; i < C; ++i)
        for (std::size_t j = i; j < C; ++j, ++k) {
            out[i] = hn::Add(out[i], hn::Mul(matrix[k], in[j]));
            if (j != i)
                out[j] = hn::Add(out[j], hn::Mul(matrix[k], in[i]));
        }
}

template <std::size_t C>
HWY_INLINE V dot(V const (&a)[C], V const (&b)[C]) {
    V sum = hn::Mul(a[0], b[0]);
    for (std::size_t i = 1; i < C; ++i)
        sum = hn::Add(sum, hn::Mul(a[i], b[i]));
    return sum;
}

template <std::size_t C>
HWY_INLINE V trace(V const (&matrix)[triangle(C)]) {
    V sum = matrix[0];
    for (std::size_t i = 1, k = C; i < C; k += C - i, ++i)
        sum = hn::Add(sum, matrix[k]);
    return sum;
}

/// Divides a scatter matrix by its trace, so that powers of it stay in range. Gives the trace, at least a small
/// positive number.
template <std::size_t C>
HWY_INLINE V normalise(V (&matrix)[triangle(C)]) {
    V const size = hn::Max(trace<C>(matrix), set(1.0f));
    V const inverse = hn::Div(set(1.0f), size);
    for (auto& entry : matrix)
        entry = hn::Mul(entry, inverse);
    return size;
}

/// `steps` steps of power iteration, begun at the column of the largest diagonal entry: that one is hardly ever
/// orthogonal to the axis.
template <std::size_t C, int steps>
HWY_INLINE void power_iteration(V const (&matrix)[triangle(C)], V (&axis)[C]) {
    std::size_t diagonal = 0;
    V largest = matrix[0];
    for (std::size_t j = 0; j < C; ++j)
        axis[j] = matrix[j];
    for (std::size_t i = 1; i < C; ++i) {
        diagonal += C - i + 1;
        M const larger = hn::Gt(matrix[diagonal], largest);
        largest = hn::Max(matrix[diagonal], largest);
        for (std::size_t j = 0; j < C; ++j) {
            std::size_t const row = j < i ? j : i;
            std::size_t const column = j < i ? i : j;
            std::size_t const entry = row * C - row * (row + 1) / 2 + column;
            axis[j] = hn::IfThenElse(larger, matrix[entry], axis[j]);
        }
    }
    for (int step = 0; step < steps; ++step) {
        V next[C];
        multiply<C>(matrix, axis, next);
        for (std::size_t j = 0; j < C; ++j)
            axis[j] = next[j];
    }
}

/// Largest eigenvalue of a normalised matrix, from below, by the Rayleigh quotient of an axis from power iteration.
template <std::size_t C, int steps>
HWY_INLINE V largest_eigenvalue(V const (&matrix)[triangle(C)]) {
    V axis[C];
    power_iteration<C, steps>(matrix, axis);
    V image[C];
    multiply<C>(matrix, axis, image);
    return hn::Div(dot<C>(axis, image), hn::Max(dot<C>(axis, axis), set(1e-30f)));
}

}  // namespace blocks::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
