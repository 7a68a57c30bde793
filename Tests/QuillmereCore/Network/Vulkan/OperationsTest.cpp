// Every operation on the software device against naive loops in double precision.

#include "QuillmereCore/Network/Vulkan/Operations.h"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>

#include "QuillmereCore/Network/NetworkTestData.h"
#include "QuillmereCore/Network/Vulkan/SoftwareDevice.h"

namespace quillmere::network::vulkan {
namespace {

using testing::DeviceArrays;
using testing::gaussianArray;
using Doubles = std::vector<double>;

Context& context() {
    static Context instance(testing::softwareDevice());
    return instance;
}

// The error of a sum in single precision grows with the root of its length.
double toleranceOf(std::uint64_t terms) {
    return 2e-6 + 3e-7 * std::sqrt(static_cast<double>(terms));
}

// Relative to the largest expected value, because sums cancel.
void expectClose(const std::vector<float>& actual, const Doubles& expected, double tolerance = 2e-6) {
    ASSERT_EQ(actual.size(), expected.size());
    double scale = 0;
    for (const double value : expected)
        scale = std::max(scale, std::abs(value));
    for (std::size_t i = 0; i < actual.size(); ++i) {
        // Written so that NaN fails.
        ASSERT_TRUE(std::abs(actual[i] - expected[i]) <= tolerance * scale)
            << "at " << i << ": " << actual[i] << " instead of " << expected[i];
    }
}

double logistic(double value) {
    return 1 / (1 + std::exp(-value));
}

double siluDerivative(double value) {
    return logistic(value) * (1 + value * (1 - logistic(value)));
}

struct ConvShape {
    int images, lo, hi, height, width;

    [[nodiscard]] ConvLayer layer() const {
        ConvLayer layer;
        layer.hiChannels = hi;
        layer.loChannels = lo;
        layer.loHeight = height;
        layer.loWidth = width;
        return layer;
    }
    [[nodiscard]] ConvSize size() const { return {layer(), images}; }
};

std::string nameOf(const ::testing::TestParamInfo<ConvShape>& test) {
    const ConvShape& s = test.param;
    return std::to_string(s.images) + "x" + std::to_string(s.lo) + "x" + std::to_string(s.hi) + "x" +
           std::to_string(s.height) + "x" + std::to_string(s.width);
}

// Calls visit(index in lo, index in hi, index in the kernel) for every product of the operator.
template <typename Visit>
void forEachTap(const ConvShape& s, Visit visit) {
    for (int n = 0; n < s.images; ++n)
        for (int l = 0; l < s.lo; ++l)
            for (int y = 0; y < s.height; ++y)
                for (int x = 0; x < s.width; ++x)
                    for (int c = 0; c < s.hi; ++c)
                        for (int i = 0; i < 4; ++i)
                            for (int j = 0; j < 4; ++j) {
                                const int row = 2 * y - 1 + i;
                                const int column = 2 * x - 1 + j;
                                if (row < 0 || row >= 2 * s.height || column < 0 || column >= 2 * s.width)
                                    continue;
                                visit(((n * s.lo + l) * s.height + y) * s.width + x,
                                      ((n * s.hi + c) * 2 * s.height + row) * 2 * s.width + column,
                                      ((l * s.hi + c) * 4 + i) * 4 + j);
                            }
}

class ConvOperation : public ::testing::TestWithParam<ConvShape> {
protected:
    const ConvShape shape = GetParam();
    const ConvSize size = shape.size();
    const std::vector<float> lo = gaussianArray(size.loCount(), 1);
    const std::vector<float> hi = gaussianArray(size.hiCount(), 2);
    const std::vector<float> kernel = gaussianArray(size.kernelCount(), 3);
    const double tolerance = toleranceOf(16 * std::max(size.loChannels, size.hiChannels));
    const double gradientTolerance = toleranceOf(size.images * size.loPixels());
    DeviceArrays device{context()};

    [[nodiscard]] Doubles naiveDown() const {
        Doubles result(size.loCount());
        forEachTap(shape, [&](int l, int h, int k) { result[l] += double{hi[h]} * kernel[k]; });
        return result;
    }
    [[nodiscard]] Doubles naiveUp() const {
        Doubles result(size.hiCount());
        forEachTap(shape, [&](int l, int h, int k) { result[h] += double{lo[l]} * kernel[k]; });
        return result;
    }
    [[nodiscard]] Doubles naiveKernelGradient() const {
        Doubles result(size.kernelCount());
        forEachTap(shape, [&](int l, int h, int k) { result[k] += double{lo[l]} * hi[h]; });
        return result;
    }

    // Applies bias per channel and SiLU to pre; returns the derivative.
    static Doubles activate(Doubles& pre, const std::vector<float>& bias, std::uint64_t pixels) {
        Doubles derivative(pre.size());
        for (std::size_t i = 0; i < pre.size(); ++i) {
            pre[i] += bias[i / pixels % bias.size()];
            derivative[i] = siluDerivative(pre[i]);
            pre[i] *= logistic(pre[i]);
        }
        return derivative;
    }
};

TEST_P(ConvOperation, DownWithBiasAndSiLUMeetsTheReference) {
    const auto bias = gaussianArray(size.loChannels, 4);
    const Range result = device.make(size.loCount());
    const Range derivative = device.make(size.loCount());
    device.operations().addDown("down", size, device.up(kernel), device.up(hi), result,
                                {.bias = device.up(bias), .silu = true, .derivative = derivative});
    const auto actual = device.run({result, derivative});
    Doubles expected = naiveDown();
    const Doubles expectedDerivative = activate(expected, bias, size.loPixels());
    expectClose(actual[0], expected, tolerance);
    expectClose(actual[1], expectedDerivative, tolerance);
}

TEST_P(ConvOperation, UpWithBiasAndSiLUMeetsTheReference) {
    const auto bias = gaussianArray(size.hiChannels, 4);
    const Range result = device.make(size.hiCount());
    const Range derivative = device.make(size.hiCount());
    device.operations().addUp("up", size, device.up(kernel), device.up(lo), result,
                              {.bias = device.up(bias), .silu = true, .derivative = derivative});
    const auto actual = device.run({result, derivative});
    Doubles expected = naiveUp();
    const Doubles expectedDerivative = activate(expected, bias, 4 * size.loPixels());
    expectClose(actual[0], expected, tolerance);
    expectClose(actual[1], expectedDerivative, tolerance);
}

TEST_P(ConvOperation, DownTimesFactorMeetsTheReference) {
    const auto factor = gaussianArray(size.loCount(), 5);
    const Range result = device.make(size.loCount());
    device.operations().addDown("down", size, device.up(kernel), device.up(hi), result,
                                {.factor = device.up(factor)});
    Doubles expected = naiveDown();
    for (std::size_t i = 0; i < expected.size(); ++i)
        expected[i] *= factor[i];
    expectClose(device.run(result), expected, tolerance);
}

TEST_P(ConvOperation, UpTimesFactorMeetsTheReference) {
    const auto factor = gaussianArray(size.hiCount(), 5);
    const Range result = device.make(size.hiCount());
    device.operations().addUp("up", size, device.up(kernel), device.up(lo), result,
                              {.factor = device.up(factor)});
    Doubles expected = naiveUp();
    for (std::size_t i = 0; i < expected.size(); ++i)
        expected[i] *= factor[i];
    expectClose(device.run(result), expected, tolerance);
}

TEST_P(ConvOperation, KernelGradientMeetsTheReference) {
    const Range gradient = device.make(size.kernelCount());
    device.operations().addKernelGradient("gradient", size, device.up(lo), device.up(hi), gradient);
    expectClose(device.run(gradient), naiveKernelGradient(), gradientTolerance);
}

TEST_P(ConvOperation, KernelGradient3x3FoldsThe4x4Gradient) {
    const Range gradient = device.make(size.kernelCount() / 16 * 9);
    device.operations().addKernelGradient3x3("gradient", size, device.up(lo), device.up(hi), gradient);
    const Doubles wide = naiveKernelGradient();
    Doubles expected(gradient.count);
    for (int h = 0; h < shape.hi; ++h)
        for (int l = 0; l < shape.lo; ++l)
            for (int y = 0; y < 3; ++y)
                for (int x = 0; x < 3; ++x)
                    for (const int i : {2 - y, 3 - y})
                        for (const int j : {2 - x, 3 - x})
                            expected[((h * shape.lo + l) * 3 + y) * 3 + x] +=
                                wide[((l * shape.hi + h) * 4 + i) * 4 + j];
    expectClose(device.run(gradient), expected, gradientTolerance);
}

INSTANTIATE_TEST_SUITE_P(Shapes, ConvOperation,
                         ::testing::Values(ConvShape{1, 1, 1, 1, 1},     // nothing but borders
                                           ConvShape{3, 5, 1, 1, 7},     // a single row
                                           ConvShape{2, 3, 2, 5, 1},     // a single column
                                           ConvShape{2, 9, 17, 3, 5},    // a multiple of no tile
                                           ConvShape{2, 24, 1, 16, 16},  // the network's layers at 32x32
                                           ConvShape{2, 48, 24, 8, 8}, ConvShape{2, 96, 48, 4, 4},
                                           ConvShape{2, 128, 96, 2, 2}, ConvShape{2, 192, 128, 1, 1},
                                           ConvShape{1, 24, 24, 24, 32}),
                         nameOf);

// Upsampling followed by the 3x3 convolution, written out, against the 4x4 form.
TEST(ExpandKernel, GivesTheSameUpLayerBordersIncluded) {
    const ConvShape shape{2, 3, 4, 3, 2};
    const ConvSize size = shape.size();
    const auto lo = gaussianArray(size.loCount(), 1);
    const auto small = gaussianArray(size.kernelCount() / 16 * 9, 2);
    DeviceArrays device(context());
    const Range expanded = device.make(size.kernelCount());
    const Range result = device.make(size.hiCount());
    Operations operations = device.operations();
    operations.addExpandKernel("expand", size, device.up(small), expanded);
    operations.addUp("up", size, expanded, device.up(lo), result, {});

    const int height = 2 * shape.height;
    const int width = 2 * shape.width;
    Doubles expected(size.hiCount());
    for (int n = 0; n < shape.images; ++n)
        for (int h = 0; h < shape.hi; ++h)
            for (int y = 0; y < height; ++y)
                for (int x = 0; x < width; ++x)
                    for (int l = 0; l < shape.lo; ++l)
                        for (int i = 0; i < 3; ++i)
                            for (int j = 0; j < 3; ++j) {
                                const int row = y + i - 1;
                                const int column = x + j - 1;
                                if (row < 0 || row >= height || column < 0 || column >= width) continue;
                                expected[((n * shape.hi + h) * height + y) * width + x] +=
                                    double{lo[((n * shape.lo + l) * shape.height + row / 2) * shape.width +
                                              column / 2]} *
                                    small[((h * shape.lo + l) * 3 + i) * 3 + j];
                            }
    expectClose(device.run(result), expected);
}

class MatrixOperation : public ::testing::TestWithParam<ProductSize> {
protected:
    const ProductSize size = GetParam();
    const std::vector<float> a = gaussianArray(size.rows * size.depth, 1);
    const std::vector<float> b = gaussianArray(size.depth * size.columns, 2);
    const double tolerance = toleranceOf(size.depth);
    DeviceArrays device{context()};

    [[nodiscard]] Doubles naive() const {
        Doubles result(size.rows * size.columns);
        for (std::uint64_t r = 0; r < size.rows; ++r)
            for (std::uint64_t k = 0; k < size.depth; ++k)
                for (std::uint64_t c = 0; c < size.columns; ++c)
                    result[r * size.columns + c] += double{a[r * size.depth + k]} * b[k * size.columns + c];
        return result;
    }
    [[nodiscard]] static std::vector<float> transposed(const std::vector<float>& m, std::uint64_t columns) {
        std::vector<float> result(m.size());
        const std::uint64_t rows = m.size() / columns;
        for (std::size_t i = 0; i < m.size(); ++i)
            result[i % columns * rows + i / columns] = m[i];
        return result;
    }
};

TEST_P(MatrixOperation, ProductWithBiasAndSiLUMeetsTheReference) {
    const auto bias = gaussianArray(size.columns, 3);
    const Range result = device.make(size.rows * size.columns);
    device.operations().addProduct("product", size, rowMajor(device.up(a), static_cast<int>(size.depth)),
                                   rowMajor(device.up(b), static_cast<int>(size.columns)), result,
                                   {.bias = device.up(bias), .silu = true});
    Doubles expected = naive();
    for (std::size_t i = 0; i < expected.size(); ++i) {
        expected[i] += bias[i % size.columns];
        expected[i] *= logistic(expected[i]);
    }
    expectClose(device.run(result), expected, tolerance);
}

TEST_P(MatrixOperation, ProductOfTransposedMatricesMeetsTheReference) {
    const Range result = device.make(size.rows * size.columns);
    device.operations().addProduct(
        "product", size,
        rowMajor(device.up(transposed(a, size.depth)), static_cast<int>(size.rows)).transposed(),
        rowMajor(device.up(transposed(b, size.columns)), static_cast<int>(size.depth)).transposed(), result,
        {});
    expectClose(device.run(result), naive(), tolerance);
}

TEST_P(MatrixOperation, SlicedProductAddsUpToTheReference) {
    const Range result = device.make(size.rows * size.columns);
    const auto bias = gaussianArray(size.columns, 3);
    Operations operations = device.operations();
    const Slices slices =
        operations.addSlicedProduct("product", size, rowMajor(device.up(a), static_cast<int>(size.depth)),
                                    rowMajor(device.up(b), static_cast<int>(size.columns)));
    operations.addSumSlices("sum", slices, result, device.up(bias));
    Doubles expected = naive();
    for (std::size_t i = 0; i < expected.size(); ++i)
        expected[i] += bias[i % size.columns];
    expectClose(device.run(result), expected, tolerance);
}

INSTANTIATE_TEST_SUITE_P(Shapes, MatrixOperation,
                         ::testing::Values(ProductSize{1, 1, 1}, ProductSize{2, 64, 576},
                                           ProductSize{16, 17, 192},   // an odd latent size
                                           ProductSize{3, 192, 64},    // the decoder's dense layer
                                           ProductSize{192, 64, 2},    // gradient of the heads
                                           ProductSize{64, 1152, 16},  // and of the decoder's dense layer
                                           ProductSize{5, 1, 20000}),  // several slices
                         [](const auto& test) {
                             return std::to_string(test.param.rows) + "x" +
                                    std::to_string(test.param.columns) + "x" +
                                    std::to_string(test.param.depth);
                         });

TEST(ChannelSums, AddsUpImagesAndPixelsOfEachChannel) {
    constexpr std::uint64_t images = 3;
    constexpr std::uint64_t channels = 5;
    for (const std::uint64_t pixels : {1U, 130U, 7001U}) {
        const auto tensor = gaussianArray(images * channels * pixels, 1);
        DeviceArrays device(context());
        const Range total = device.make(channels);
        device.operations().addChannelSums("sums", images, channels, pixels, device.up(tensor), total);
        Doubles expected(channels);
        for (std::size_t i = 0; i < tensor.size(); ++i)
            expected[i / pixels % channels] += tensor[i];
        expectClose(device.run(total), expected);
    }
}

class LastLayer : public ::testing::TestWithParam<ConvShape> {  // lo: channels
protected:
    const ConvShape shape = GetParam();
    const OutputLayer layer{shape.lo, shape.height, shape.width, 0, 0};
    const int batch = shape.images;
    const std::size_t pixels = static_cast<std::size_t>(shape.height) * shape.width;
    const std::vector<float> tensor = gaussianArray(batch * shape.lo * pixels, 1);
    const std::vector<float> kernel = gaussianArray(static_cast<std::size_t>(shape.lo) * 9, 2);
    const std::vector<float> bias{-0.6F};
    DeviceArrays device{context()};

    // Calls visit(index in the image, index in the tensor, index in the kernel).
    template <typename Visit>
    void forEachTap(Visit visit) const {
        for (int n = 0; n < batch; ++n)
            for (int c = 0; c < shape.lo; ++c)
                for (int y = 0; y < shape.height; ++y)
                    for (int x = 0; x < shape.width; ++x)
                        for (int i = 0; i < 3; ++i)
                            for (int j = 0; j < 3; ++j) {
                                const int row = y + i - 1;
                                const int column = x + j - 1;
                                if (row < 0 || row >= shape.height || column < 0 || column >= shape.width)
                                    continue;
                                visit((n * shape.height + y) * shape.width + x,
                                      ((n * shape.lo + c) * shape.height + row) * shape.width + column,
                                      c * 9 + i * 3 + j);
                            }
    }
    [[nodiscard]] Doubles image() const {
        Doubles result(batch * pixels, bias[0]);
        forEachTap([&](int o, int t, int k) { result[o] += double{tensor[t]} * kernel[k]; });
        return result;
    }
};

TEST_P(LastLayer, ImageMeetsTheReference) {
    const Range result = device.make(batch * pixels);
    device.operations().addOutputImage(layer, batch, device.up(tensor), device.up(kernel), device.up(bias),
                                       result);
    expectClose(device.run(result), image());
}

TEST_P(LastLayer, LossAndItsGradientMeetTheReference) {
    const LossTerm term;
    std::vector<float> target = testing::speckledImages(batch * pixels, 5);
    target[0] = term.threshold;  // not above it: counts once
    const Range gradient = device.make(batch * pixels);
    const Range result = device.make(2);
    Operations operations = device.operations();
    const Range parts = operations.addOutputLoss(layer, term, batch, device.up(tensor), device.up(kernel),
                                                 device.up(bias), device.up(target), gradient);
    operations.addLoss(parts, batch * pixels, device.up({0.25F}), result);
    const auto actual = device.run({gradient, result});

    const Doubles recon = image();
    Doubles expected(recon.size());
    double sum = 0;
    for (std::size_t i = 0; i < recon.size(); ++i) {
        const double difference = recon[i] - target[i];
        const double weight = target[i] > term.threshold ? 4 : 1;
        expected[i] = 2 * difference * weight / static_cast<double>(recon.size());
        sum += difference * difference * weight;
    }
    expectClose(actual[0], expected);
    expectClose(actual[1], {sum / static_cast<double>(recon.size()), 0.25});
}

TEST_P(LastLayer, GradientsMeetTheReference) {
    const auto gradient = gaussianArray(batch * pixels, 6);
    const auto factor = gaussianArray(tensor.size(), 7);
    const Range data = device.make(tensor.size());
    const Range weight = device.make(kernel.size());
    const Range biasGradient = device.make(1);
    Operations operations = device.operations();
    const Range up = device.up(gradient);
    operations.addOutputDataGradient(layer, batch, up, device.up(kernel), device.up(factor), data);
    operations.addOutputWeightGradient(layer, batch, up, device.up(tensor), weight, biasGradient);
    const auto actual = device.run({data, weight, biasGradient});

    Doubles expectedData(tensor.size());
    Doubles expectedWeight(kernel.size());
    forEachTap([&](int o, int t, int k) {
        expectedData[t] += double{gradient[o]} * kernel[k];
        expectedWeight[k] += double{gradient[o]} * tensor[t];
    });
    double expectedBias = 0;
    for (const float g : gradient)
        expectedBias += g;
    for (std::size_t i = 0; i < factor.size(); ++i)
        expectedData[i] *= factor[i];
    expectClose(actual[0], expectedData);
    expectClose(actual[1], expectedWeight);
    EXPECT_NEAR(actual[2][0], expectedBias, 1e-4);
}

INSTANTIATE_TEST_SUITE_P(Shapes, LastLayer,
                         ::testing::Values(ConvShape{1, 1, 0, 1, 1}, ConvShape{2, 24, 0, 32, 32},
                                           ConvShape{3, 24, 0, 5, 70}, ConvShape{1, 3, 0, 96, 130}),
                         nameOf);

class LatentOperation : public ::testing::Test {
protected:
    static constexpr std::size_t count = 300;
    const LatentStep step{};
    const std::vector<float> mean = gaussianArray(count, 1);
    const std::vector<float> eps = gaussianArray(count, 2);
    std::vector<float> logVariance = gaussianArray(count, 3, 5);  // some beyond the clamp
    DeviceArrays device{context()};

    [[nodiscard]] double clamped(std::size_t i) const {
        return std::clamp(logVariance[i], step.logVarMin, step.logVarMax);
    }
};

TEST_F(LatentOperation, ReparameterisesWithTheClampedVariance) {
    logVariance[0] = 1000;
    logVariance[1] = -1000;
    const Range z = device.make(count);
    const Range kl = device.make(1);
    device.operations().addLatent(step, device.up(mean), device.up(logVariance), device.up(eps), z, kl);
    const auto actual = device.run({z, kl});
    Doubles expected(count);
    double sum = 0;
    for (std::size_t i = 0; i < count; ++i) {
        expected[i] = mean[i] + std::exp(0.5 * clamped(i)) * eps[i];
        sum += 1 + clamped(i) - double{mean[i]} * mean[i] - std::exp(clamped(i));
    }
    expectClose(actual[0], expected);
    expectClose(actual[1], {-0.5 * sum / count});
}

TEST_F(LatentOperation, GradientStopsAtTheClamp) {
    constexpr double klWeight = 0.3;
    logVariance[0] = step.logVarMax;  // at the bound it still passes
    logVariance[1] = std::nextafter(step.logVarMax, 100.0F);
    logVariance[2] = step.logVarMin;
    logVariance[3] = std::nextafter(step.logVarMin, -100.0F);
    const auto zGradient = gaussianArray(3 * count, 4);
    const Range meanGradient = device.make(count);
    const Range logVarianceGradient = device.make(count);
    device.operations().addLatentGradient(
        step, {device.up(zGradient), 3}, device.up(mean), device.up(logVariance), device.up(eps),
        device.up({123.0F, static_cast<float>(klWeight)}), meanGradient, logVarianceGradient);
    const auto actual = device.run({meanGradient, logVarianceGradient});
    Doubles expectedMean(count);
    Doubles expectedLogVariance(count);
    for (std::size_t i = 0; i < count; ++i) {
        const double z = double{zGradient[i]} + zGradient[count + i] + zGradient[2 * count + i];
        expectedMean[i] = z + klWeight / count * mean[i];
        const double l = logVariance[i];
        if (l < step.logVarMin || l > step.logVarMax) continue;
        expectedLogVariance[i] =
            z * eps[i] * 0.5 * std::exp(0.5 * l) + 0.5 * klWeight / count * (std::exp(l) - 1);
    }
    expectClose(actual[0], expectedMean);
    expectClose(actual[1], expectedLogVariance);
    EXPECT_NE(actual[1][0], 0);
    EXPECT_EQ(actual[1][1], 0);
    EXPECT_EQ(actual[1][3], 0);
}

TEST(FlattenedGradient, GathersFromBothHeads) {
    constexpr int batch = 3;
    const DenseLayer head{200, 7, 0, 0};
    const auto dMean = gaussianArray(batch * 7, 1);
    const auto dLogVar = gaussianArray(batch * 7, 2);
    const auto wMean = gaussianArray(200 * 7, 3);
    const auto wLogVar = gaussianArray(200 * 7, 4);
    const auto factor = gaussianArray(batch * 200, 5);
    DeviceArrays device(context());
    const Range result = device.make(factor.size());
    device.operations().addFlattenedGradient(batch, head, device.up(dMean), device.up(dLogVar),
                                             device.up(wMean), device.up(wLogVar), device.up(factor), result);
    Doubles expected(factor.size());
    for (std::size_t i = 0; i < expected.size(); ++i) {
        for (std::size_t l = 0; l < 7; ++l) {
            expected[i] += double{dMean[i / 200 * 7 + l]} * wMean[i % 200 * 7 + l] +
                           double{dLogVar[i / 200 * 7 + l]} * wLogVar[i % 200 * 7 + l];
        }
        expected[i] *= factor[i];
    }
    expectClose(device.run(result), expected);
}

TEST(Adam, UpdatesParametersAndMomentsInPlace) {
    constexpr std::size_t count = 1000;
    const Optimiser optimiser;
    constexpr float rate = 1e-3F;
    const auto parameter = gaussianArray(count, 1);
    auto gradient = gaussianArray(count, 2);
    gradient[0] = 0;
    const auto first = gaussianArray(count, 3);
    auto second = gaussianArray(count, 4);
    for (float& value : second)
        value *= value;
    second[0] = 0;
    DeviceArrays device(context());
    const Range p = device.up(parameter);
    const Range m = device.up(first);
    const Range v = device.up(second);
    device.operations().addAdam(optimiser, p, device.up(gradient), m, v, device.up({rate, 5.0F}));
    const auto actual = device.run({p, m, v});
    Doubles expectedP(count);
    Doubles expectedM(count);
    Doubles expectedV(count);
    for (std::size_t i = 0; i < count; ++i) {
        const double g = gradient[i];
        expectedM[i] = double{optimiser.beta1} * first[i] + (1.0F - optimiser.beta1) * g;
        expectedV[i] = double{optimiser.beta2} * second[i] + (1.0F - optimiser.beta2) * g * g;
        expectedP[i] = parameter[i] - rate * expectedM[i] / (std::sqrt(expectedV[i]) + optimiser.epsilon);
    }
    expectClose(actual[0], expectedP);
    expectClose(actual[1], expectedM);
    expectClose(actual[2], expectedV);
}

// More groups than one line of a dispatch may have.
TEST(LinearGroups, GoOnInASecondLine) {
    EXPECT_EQ(linearGroups(1), (std::array<std::uint32_t, 3>{1, 1, 1}));
    EXPECT_EQ(linearGroups(65535), (std::array<std::uint32_t, 3>{65535, 1, 1}));
    EXPECT_EQ(linearGroups(65536), (std::array<std::uint32_t, 3>{32768, 2, 1}));
    const std::size_t count = std::size_t{65535} * 128 + 1000;
    std::vector<float> values(count);
    for (std::size_t i = 0; i < count; ++i)
        values[i] = static_cast<float>(i % 1000);
    DeviceArrays device(context());
    const Range result = device.make(count);
    device.operations().addSumSlices("copy", {device.up(values), 1}, result, {});
    EXPECT_EQ(device.run(result), values);
}

}  // namespace
}  // namespace quillmere::network::vulkan
