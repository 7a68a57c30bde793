#include "QuillmereCore/Origin/LatentMap.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <tuple>
#include <utility>

#include "QuillmereCore/Util/Failure.h"

namespace quillmere {
namespace {

constexpr std::size_t axes = 2;

// Square, row by row.
class Matrix {
public:
    explicit Matrix(std::size_t size) : size_(size), values_(size * size) {}

    [[nodiscard]] std::size_t size() const { return size_; }
    double& at(std::size_t row, std::size_t column) { return values_[row * size_ + column]; }
    [[nodiscard]] double at(std::size_t row, std::size_t column) const {
        return values_[row * size_ + column];
    }
    std::span<double> row(std::size_t index) { return std::span(values_).subspan(index * size_, size_); }

private:
    std::size_t size_;
    std::vector<double> values_;
};

std::vector<double> meanOf(std::span<const std::vector<float>> latents, std::size_t dim) {
    std::vector<double> mean(dim);
    for (const std::vector<float>& latent : latents) {
        for (std::size_t j = 0; j < dim; ++j)
            mean[j] += static_cast<double>(latent[j]);
    }
    for (double& value : mean)
        value /= static_cast<double>(std::max<std::size_t>(latents.size(), 1));
    return mean;
}

std::vector<double> difference(std::span<const float> latent, std::span<const double> mean) {
    std::vector<double> result(mean.size());
    for (std::size_t j = 0; j < mean.size(); ++j)
        result[j] = static_cast<double>(latent[j]) - mean[j];
    return result;
}

// The sums of the products, which have the eigenvectors of the covariance.
Matrix scatter(std::span<const std::vector<float>> latents, std::span<const double> mean,
               const std::stop_token& stop) {
    Matrix sums(mean.size());
    for (const std::vector<float>& latent : latents) {
        throwIfCancelled(stop);
        const std::vector<double> deviation = difference(latent, mean);
        for (std::size_t i = 0; i < mean.size(); ++i) {
            const std::span<double> row = sums.row(i);
            for (std::size_t j = i; j < mean.size(); ++j)
                row[j] += deviation[i] * deviation[j];
        }
    }
    for (std::size_t i = 0; i < mean.size(); ++i) {
        for (std::size_t j = 0; j < i; ++j)
            sums.at(i, j) = sums.at(j, i);
    }
    return sums;
}

// Turns rows p and q in their plane.
void rotateRows(Matrix& matrix, std::size_t p, std::size_t q, double cosine, double sine) {
    const std::span<double> a = matrix.row(p);
    const std::span<double> b = matrix.row(q);
    for (std::size_t k = 0; k < matrix.size(); ++k) {
        const double before = a[k];
        a[k] = cosine * before - sine * b[k];
        b[k] = sine * before + cosine * b[k];
    }
}

void rotateColumns(Matrix& matrix, std::size_t p, std::size_t q, double cosine, double sine) {
    for (std::size_t k = 0; k < matrix.size(); ++k) {
        const double before = matrix.at(k, p);
        matrix.at(k, p) = cosine * before - sine * matrix.at(k, q);
        matrix.at(k, q) = sine * before + cosine * matrix.at(k, q);
    }
}

// Makes the entry (p, q) zero by a rotation of both sides, and does the same to the rows of vectors.
void eliminate(Matrix& matrix, Matrix& vectors, std::size_t p, std::size_t q) {
    const double theta = (matrix.at(q, q) - matrix.at(p, p)) / (2 * matrix.at(p, q));
    const double sign = theta < 0 ? -1 : 1;
    const double tangent = sign / (std::abs(theta) + std::sqrt(theta * theta + 1));
    const double cosine = 1 / std::sqrt(tangent * tangent + 1);
    const double sine = tangent * cosine;
    rotateRows(matrix, p, q, cosine, sine);
    rotateColumns(matrix, p, q, cosine, sine);
    matrix.at(p, q) = 0;
    matrix.at(q, p) = 0;
    rotateRows(vectors, p, q, cosine, sine);
}

double trace(const Matrix& matrix) {
    double sum = 0;
    for (std::size_t i = 0; i < matrix.size(); ++i)
        sum += matrix.at(i, i);
    return sum;
}

// Makes a symmetric matrix that is positive semi-definite diagonal. Returns its eigenvectors as rows, in the
// order of the diagonal.
Matrix diagonalise(Matrix& matrix, const std::stop_token& stop) {
    constexpr int mostSweeps = 60;  // ten are plenty
    const std::size_t size = matrix.size();
    // So small that no place would notice.
    const double negligible = trace(matrix) * 1e-17;
    Matrix vectors(size);
    for (std::size_t i = 0; i < size; ++i)
        vectors.at(i, i) = 1;
    bool isDiagonal = false;
    for (int sweep = 0; sweep < mostSweeps && !isDiagonal; ++sweep) {
        isDiagonal = true;
        for (std::size_t p = 0; p + 1 < size; ++p) {
            throwIfCancelled(stop);
            for (std::size_t q = p + 1; q < size; ++q) {
                if (!(std::abs(matrix.at(p, q)) > negligible)) continue;
                isDiagonal = false;
                eliminate(matrix, vectors, p, q);
            }
        }
    }
    return vectors;
}

void makeLargestPositive(std::vector<double>& direction) {
    const auto largest =
        std::ranges::max_element(direction, [](double a, double b) { return std::abs(a) < std::abs(b); });
    if (largest == direction.end() || !(*largest < 0)) return;
    for (double& value : direction)
        value = -value;
}

double product(std::span<const double> a, std::span<const double> b) {
    double sum = 0;
    for (std::size_t i = 0; i < a.size(); ++i)
        sum += a[i] * b[i];
    return sum;
}

}  // namespace

LatentMap::LatentMap(std::span<const std::vector<float>> latents, std::size_t dim,
                     const std::stop_token& stop) {
    for (const std::vector<float>& latent : latents)
        require(latent.size() >= dim, "LatentMap: a latent vector is too short");
    mean_ = meanOf(latents, dim);
    Matrix matrix = scatter(latents, mean_, stop);
    const double variance = trace(matrix);
    Matrix vectors = diagonalise(matrix, stop);
    std::vector<std::size_t> order(dim);
    for (std::size_t i = 0; i < dim; ++i)
        order[i] = i;
    std::ranges::stable_sort(order, std::ranges::greater(), [&](std::size_t i) { return matrix.at(i, i); });
    for (std::size_t axis = 0; axis < axes; ++axis) {
        directions_[axis].assign(dim, 0);  // one dimension has no second direction
        if (axis >= dim) continue;
        std::ranges::copy(vectors.row(order[axis]), directions_[axis].begin());
        makeLargestPositive(directions_[axis]);
        if (variance > 0) shares_[axis] = matrix.at(order[axis], order[axis]) / variance;
    }
    for (const std::vector<float>& latent : latents)
        places_.push_back(placeOf(latent));
}

MapPlace LatentMap::placeOf(std::span<const float> latent) const {
    require(latent.size() >= mean_.size(), "LatentMap: a latent vector is too short");
    const std::vector<double> deviation = difference(latent, mean_);
    return {product(deviation, directions_[0]), product(deviation, directions_[1])};
}

std::vector<LatentDraw::Source> LatentMap::blendAt(MapPlace place) const {
    constexpr std::size_t most = 4;
    require(!places_.empty(), "LatentMap: no clips to blend");
    struct Near {
        double distance;
        std::size_t clip;

        bool operator<(const Near& other) const {
            return std::tie(distance, clip) < std::tie(other.distance, other.clip);
        }
    };
    std::vector<Near> near;
    for (std::size_t clip = 0; clip < places_.size(); ++clip) {
        const double x = places_[clip].x - place.x;
        const double y = places_[clip].y - place.y;
        near.push_back({std::sqrt(x * x + y * y), clip});
    }
    const std::size_t kept = std::min(most + 1, near.size());
    std::partial_sort(near.begin(), near.begin() + static_cast<std::ptrdiff_t>(kept), near.end());
    near.resize(kept);
    const double reach = kept > most ? 1 / near[most].distance : 0;  // infinite where five are at one place
    near.resize(std::min(most, kept));

    std::vector<double> weights;
    double sum = 0;
    for (const Near& one : near) {
        const double closeness = 1 / one.distance - reach;
        weights.push_back(closeness * closeness);
        sum += weights.back();
    }
    if (!std::isfinite(sum) || !(sum > 0)) {
        // At the place of clips, or equally far from all: equal shares of the nearest.
        sum = 0;
        for (std::size_t i = 0; i < near.size(); ++i) {
            weights[i] = near[i].distance == near.front().distance ? 1 : 0;
            sum += weights[i];
        }
    }
    std::vector<LatentDraw::Source> blend;
    for (std::size_t i = 0; i < near.size(); ++i) {
        if (weights[i] > 0) blend.push_back({near[i].clip, static_cast<float>(weights[i] / sum)});
    }
    return blend;
}

}  // namespace quillmere
