// What happens to each output vector of a layer. Included once per instruction set.
#if defined(QUILLMERE_NETWORK_EPILOGUES_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef QUILLMERE_NETWORK_EPILOGUES_INL_H_
#undef QUILLMERE_NETWORK_EPILOGUES_INL_H_
#else
#define QUILLMERE_NETWORK_EPILOGUES_INL_H_
#endif

#include <cstddef>

#include "QuillmereCore/Network/CPU/Simd-inl.h"

HWY_BEFORE_NAMESPACE();
namespace quillmere::network::cpu::HWY_NAMESPACE {

// An epilogue makes a Lane for each vector of channels; the lane sees every pixel's value and its offset in
// the output tensor.

struct SiluEpilogue {
    float* act;
    float* derivative;  // may be null
    const float* bias;

    template <class D>
    class Lane {
    public:
        HWY_INLINE Lane(D, const SiluEpilogue& e, int channel)
            : epilogue_(e), bias_(hn::LoadU(D(), e.bias + channel)) {}
        HWY_INLINE void operator()(hn::Vec<D> x, std::size_t offset) {
            const D d;
            const auto result = silu(d, hn::Add(x, bias_));
            hn::StoreU(result.value, d, epilogue_.act + offset);
            if (epilogue_.derivative) hn::StoreU(result.derivative, d, epilogue_.derivative + offset);
        }
        HWY_INLINE void finish() {}

    private:
        const SiluEpilogue& epilogue_;
        hn::Vec<D> bias_;
    };
};

// gradient = incoming * SiLU', in place of SiLU'; its sum over pixels is the bias gradient.
struct GradientEpilogue {
    float* derivative;
    float* biasGradient;

    template <class D>
    class Lane {
    public:
        HWY_INLINE Lane(D d, const GradientEpilogue& e, int channel)
            : derivative_(e.derivative), total_(e.biasGradient + channel), sum_(hn::Zero(d)) {}
        HWY_INLINE void operator()(hn::Vec<D> x, std::size_t offset) {
            const D d;
            const auto gradient = hn::Mul(x, hn::LoadU(d, derivative_ + offset));
            hn::StoreU(gradient, d, derivative_ + offset);
            sum_ = hn::Add(sum_, gradient);
        }
        HWY_INLINE void finish() {
            const D d;
            hn::StoreU(hn::Add(hn::LoadU(d, total_), sum_), d, total_);
        }

    private:
        float* derivative_;
        float* total_;
        hn::Vec<D> sum_;
    };
};

}  // namespace quillmere::network::cpu::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
