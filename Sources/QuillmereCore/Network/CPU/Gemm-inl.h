// Small matrix products, all operands row-major. Included once per instruction set.
//
// The accumulators of one call stay in registers: tileRows x tileVectors of them, as many as the register
// file holds beside the operands. Every element is accumulated in ascending k by fused multiply-adds, so
// its bits do not depend on where a block boundary falls.
#if defined(QUILLMERE_NETWORK_GEMM_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef QUILLMERE_NETWORK_GEMM_INL_H_
#undef QUILLMERE_NETWORK_GEMM_INL_H_
#else
#define QUILLMERE_NETWORK_GEMM_INL_H_
#endif

#include "QuillmereCore/Network/CPU/Simd-inl.h"

HWY_BEFORE_NAMESPACE();
namespace quillmere::network::cpu::HWY_NAMESPACE {

#if HWY_MAX_BYTES == 64  // 32 registers of 16 lanes
inline constexpr int tileRows = 8;
inline constexpr int tileVectors = 3;
#elif HWY_MAX_BYTES == 32  // 16 registers of 8 lanes
inline constexpr int tileRows = 4;
inline constexpr int tileVectors = 3;
#else
inline constexpr int tileRows = 4;
inline constexpr int tileVectors = 2;
#endif

struct MatrixView {
    const float* data;
    std::size_t stride;
};

enum class Product {
    plain,           // C = A B, A [rows][depth]
    transposedA,     // C = A^T B, A [depth][rows]
    transposedASum,  // C += A^T B
};

// One cache line for each k, stride floats apart.
struct Lines {
    const float* first;
    std::size_t stride;
};

// Fetches what the next product reads while this one computes: an operand that comes from the third-level
// cache is read in a fraction of the product's time, at the speed of that cache, and would stall it.
struct NothingAhead {
    static constexpr bool active = false;
    HWY_INLINE Lines next(std::size_t) { return {nullptr, 0}; }
};

// Lines of memory from first to end.
struct BlockAhead {
    static constexpr bool active = true;
    const float* first;
    const float* end;
    HWY_INLINE Lines next(std::size_t depth) {
        const float* const begin = first;
        if (first >= end) return {begin, 0};
        first += depth * 16;
        return {begin, 16};
    }
};

// The rows of A below the ones in work, which lie one after the other.
struct RowsBelow {
    static constexpr bool active = true;
    const float* rows;
    HWY_INLINE Lines next(std::size_t depth) {
        rows += tileRows * depth;
        return {rows, tileRows};
    }
};

// The first lines of each row of a matrix of as many rows as the product is deep, then of another one.
struct RowsAhead {
    static constexpr bool active = true;
    const float* rows[2];
    std::size_t stride[2];
    std::size_t lines[2];
    std::size_t done = 0;
    HWY_INLINE Lines next(std::size_t) {
        const std::size_t line = done++;
        if (line < lines[0]) return {rows[0] + line * 16, stride[0]};
        if (line < lines[0] + lines[1]) return {rows[1] + (line - lines[0]) * 16, stride[1]};
        return {rows[0], 0};
    }
};

// C [rows][vectors of columns] from B [depth][columns].
template <Product product, int rows, int vectors, bool fetch>
HWY_INLINE void productTile(std::size_t depth, MatrixView A, MatrixView B, float* HWY_RESTRICT C,
                            std::size_t ldc, Lines ahead) {
    const FullTag d;
    using V = hn::Vec<FullTag>;
    V sum[rows][vectors];
#pragma GCC unroll 16
    for (int r = 0; r < rows; ++r) {
#pragma GCC unroll 16
        for (int v = 0; v < vectors; ++v)
            sum[r][v] = hn::Zero(d);
    }
    for (std::size_t k = 0; k < depth; ++k) {
        if constexpr (fetch) __builtin_prefetch(ahead.first + k * ahead.stride, 0, 2);
        V b[vectors];
#pragma GCC unroll 16
        for (int v = 0; v < vectors; ++v)
            b[v] = hn::LoadU(d, B.data + k * B.stride + v * lanesOf<FullTag>);
#pragma GCC unroll 16
        for (int r = 0; r < rows; ++r) {
            const V a = hn::Set(d, A.data[product == Product::plain ? r * A.stride + k : k * A.stride + r]);
#pragma GCC unroll 16
            for (int v = 0; v < vectors; ++v)
                sum[r][v] = hn::MulAdd(a, b[v], sum[r][v]);
        }
    }
#pragma GCC unroll 16
    for (int r = 0; r < rows; ++r) {
#pragma GCC unroll 16
        for (int v = 0; v < vectors; ++v) {
            float* const c = C + r * ldc + v * lanesOf<FullTag>;
            if constexpr (product == Product::transposedASum) sum[r][v] = hn::Add(hn::LoadU(d, c), sum[r][v]);
            hn::StoreU(sum[r][v], d, c);
        }
    }
}

template <Product product, int vectors, class Ahead>
HWY_ATTR void productPanel(int m, std::size_t depth, MatrixView A, MatrixView B, float* C, std::size_t ldc,
                           Ahead& ahead) {
    const std::size_t rowStep = product == Product::plain ? A.stride : 1;
    const auto block = [&]<int rows>(int row) HWY_ATTR {
        productTile<product, rows, vectors, Ahead::active>(depth, {A.data + row * rowStep, A.stride}, B,
                                                           C + row * ldc, ldc, ahead.next(depth));
    };
    int row = 0;
    for (; row + tileRows <= m; row += tileRows)
        block.template operator()<tileRows>(row);
    if constexpr (tileRows > 4) {
        if (m - row >= 4) {
            block.template operator()<4>(row);
            row += 4;
        }
    }
    for (; row < m; ++row)
        block.template operator()<1>(row);
}

// Splits n columns into panels of tileVectors, two or one vectors and calls panel<vectors>(first column).
template <class Panel>
HWY_INLINE void forEachPanel(int n, Panel panel) {
    const int vectors = n / lanesOf<FullTag>;
    int v = 0;
    while (v < vectors) {
        const int left = vectors - v;
        const int column = v * lanesOf<FullTag>;
        // Four left over are better taken as two pairs than as three and one.
        if (tileVectors == 3 && left >= 3 && left != 4) {
            panel.template operator()<tileVectors>(column);
            v += tileVectors;
        } else if (left >= 2) {
            panel.template operator()<2>(column);
            v += 2;
        } else {
            panel.template operator()<1>(column);
            v += 1;
        }
    }
}

template <Product product, class Ahead>
HWY_INLINE void multiplyPanels(int m, int n, int k, const float* A, int lda, const float* B, int ldb,
                               float* C, int ldc, Ahead ahead) {
    forEachPanel(n, [&]<int vectors>(int column) HWY_ATTR {
        productPanel<product, vectors>(m, static_cast<std::size_t>(k), {A, static_cast<std::size_t>(lda)},
                                       {B + column, static_cast<std::size_t>(ldb)}, C + column,
                                       static_cast<std::size_t>(ldc), ahead);
    });
}

inline HWY_ATTR void multiply(int m, int n, int k, const float* A, int lda, const float* B, int ldb, float* C,
                              int ldc) {
    multiplyPanels<Product::plain>(m, n, k, A, lda, B, ldb, C, ldc, NothingAhead());
}

inline HWY_ATTR void addTransposedA(int m, int n, int k, const float* A, int lda, const float* B, int ldb,
                                    float* C, int ldc) {
    multiplyPanels<Product::transposedASum>(m, n, k, A, lda, B, ldb, C, ldc, NothingAhead());
}

inline HWY_ATTR void multiplyTransposedA(int m, int n, int k, const float* A, int lda, const float* B,
                                         int ldb, float* C, int ldc) {
    multiplyPanels<Product::transposedA>(m, n, k, A, lda, B, ldb, C, ldc, NothingAhead());
}

// C [rows][columns] = A [rows][k] * B [columns][k]^T: dot products, a vector of partial sums each.
template <int rows, int columns>
HWY_INLINE void multiplyDotTile(int k, MatrixView A, MatrixView B, float* C, std::size_t ldc) {
    const FullTag d;
    using V = hn::Vec<FullTag>;
    V sum[rows][columns];
#pragma GCC unroll 16
    for (int r = 0; r < rows; ++r) {
#pragma GCC unroll 16
        for (int c = 0; c < columns; ++c)
            sum[r][c] = hn::Zero(d);
    }
    for (int q = 0; q < k; q += lanesOf<FullTag>) {
        V b[columns];
#pragma GCC unroll 16
        for (int c = 0; c < columns; ++c)
            b[c] = hn::LoadU(d, B.data + c * B.stride + q);
#pragma GCC unroll 16
        for (int r = 0; r < rows; ++r) {
            const V a = hn::LoadU(d, A.data + r * A.stride + q);
#pragma GCC unroll 16
            for (int c = 0; c < columns; ++c)
                sum[r][c] = hn::MulAdd(a, b[c], sum[r][c]);
        }
    }
#pragma GCC unroll 16
    for (int r = 0; r < rows; ++r) {
#pragma GCC unroll 16
        for (int c = 0; c < columns; ++c)
            C[r * ldc + c] = hn::GetLane(hn::SumOfLanes(d, sum[r][c]));
    }
}

inline HWY_ATTR void multiplyTransposedB(int m, int n, int k, const float* A, int lda, const float* B,
                                         int ldb, float* C, int ldc) {
    constexpr int columns = 4;
    const auto aStride = static_cast<std::size_t>(lda);
    const auto bStride = static_cast<std::size_t>(ldb);
    for (int column = 0; column < n; column += columns) {
        const MatrixView b{B + column * bStride, bStride};
        int row = 0;
        for (; row + 4 <= m; row += 4) {
            multiplyDotTile<4, columns>(k, {A + row * aStride, aStride}, b, C + row * ldc + column, ldc);
        }
        for (; row < m; ++row) {
            multiplyDotTile<1, columns>(k, {A + row * aStride, aStride}, b, C + row * ldc + column, ldc);
        }
    }
}

}  // namespace quillmere::network::cpu::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
