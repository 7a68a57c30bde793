#pragma once

#include <hwy/targets.h>

#include <cstdint>
#include <string>
#include <vector>

namespace quillmere::testing {

// While it lives, vector code runs on one instruction set. Nothing else may run vector code meanwhile.
class InstructionSet {
public:
    explicit InstructionSet(std::int64_t target) { hwy::SetSupportedTargetsForTest(target); }
    ~InstructionSet() { hwy::SetSupportedTargetsForTest(0); }
    InstructionSet(const InstructionSet&) = delete;
    InstructionSet& operator=(const InstructionSet&) = delete;

    static std::string name(std::int64_t target) { return hwy::TargetName(target); }

    // What this processor has, of the sets the library is compiled for.
    static std::vector<std::int64_t> available() {
        return supportedOf({HWY_SCALAR, HWY_SSE4, HWY_AVX2, HWY_AVX3, HWY_NEON});
    }
    // Those with fused multiply-add, and those without: within each group results are equal bit for bit.
    static std::vector<std::int64_t> fused() { return supportedOf({HWY_AVX2, HWY_AVX3, HWY_NEON}); }
    static std::vector<std::int64_t> plain() { return supportedOf({HWY_SCALAR, HWY_SSE4}); }

private:
    static std::vector<std::int64_t> supportedOf(const std::vector<std::int64_t>& targets) {
        std::vector<std::int64_t> found;
        for (const std::int64_t target : targets) {
            if (target == HWY_SCALAR || (hwy::SupportedTargets() & target) != 0) found.push_back(target);
        }
        return found;
    }
};

}  // namespace quillmere::testing
