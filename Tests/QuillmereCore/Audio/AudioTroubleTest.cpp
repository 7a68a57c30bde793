// Memory that is short and a converter that fails. The test program stands in for the functions of the
// libraries, which its copy of the core calls instead.

#include <dlfcn.h>
#include <gtest/gtest.h>
#include <soxr.h>

#include <cstddef>
#include <cstdlib>
#include <limits>
#include <new>
#include <string>
#include <vector>

#include "QuillmereCore/Audio/AudioIO.h"
#include "Support/AudioFixtures.h"
#include "Support/Signals.h"
#include "Support/TempFolder.h"
#include "Support/WAVBytes.h"

namespace {

thread_local std::size_t largestAllocation = std::numeric_limits<std::size_t>::max();
thread_local bool converterIsRefused = false;
thread_local bool converterFails = false;

// While one of these lives, an allocation of more bytes fails.
class ShortMemory {
public:
    explicit ShortMemory(std::size_t bytes) { largestAllocation = bytes; }
    ~ShortMemory() { largestAllocation = std::numeric_limits<std::size_t>::max(); }
    ShortMemory(const ShortMemory&) = delete;
    ShortMemory& operator=(const ShortMemory&) = delete;
};

// While it lives, the flag is set.
class Raised {
public:
    explicit Raised(bool& flag) : flag_(flag) { flag_ = true; }
    ~Raised() { flag_ = false; }
    Raised(const Raised&) = delete;
    Raised& operator=(const Raised&) = delete;

private:
    bool& flag_;
};

template <typename Function>
Function* next(const char* name) {
    return reinterpret_cast<Function*>(::dlsym(RTLD_NEXT, name));
}

}  // namespace

// Not inlined: GCC takes new and free for a mismatch where it sees through one of them.
[[gnu::noinline]] void* operator new(std::size_t bytes) {
    void* const memory = bytes <= largestAllocation ? std::malloc(bytes == 0 ? 1 : bytes) : nullptr;
    if (memory == nullptr) throw std::bad_alloc();
    return memory;
}
[[gnu::noinline]] void operator delete(void* memory) noexcept {
    std::free(memory);
}
[[gnu::noinline]] void operator delete(void* memory, std::size_t /*bytes*/) noexcept {
    std::free(memory);
}

extern "C" soxr_t soxr_create(double from, double to, unsigned channels, soxr_error_t* error,
                              soxr_io_spec_t const* io, soxr_quality_spec_t const* quality,
                              soxr_runtime_spec_t const* runtime) {
    if (converterIsRefused) {
        *error = "malloc failed";
        return nullptr;
    }
    static auto* const real = next<decltype(soxr_create)>("soxr_create");
    return real(from, to, channels, error, io, quality, runtime);
}

extern "C" soxr_error_t soxr_process(soxr_t filter, soxr_in_t in, std::size_t inSize, std::size_t* taken,
                                     soxr_out_t out, std::size_t outSize, std::size_t* given) {
    if (converterFails) return "malloc failed";
    static auto* const real = next<decltype(soxr_process)>("soxr_process");
    return real(filter, in, inSize, taken, out, outSize, given);
}

namespace quillmere {
namespace {

using testing::floatWAV;
using testing::noise;
using testing::TempFolder;
using testing::writeText;

template <typename Work>
void expectOutOfMemory(const Work& work) {
    try {
        work();
        ADD_FAILURE() << "nothing was thrown";
    } catch (const AudioIOError& error) {
        EXPECT_STREQ(error.what(), "Could not read x.wav: out of memory");
        EXPECT_TRUE(error.isSystemTrouble());
    }
}

TEST(AudioTrouble, ReadingSaysThatMemoryIsShort) {
    const TempFolder folder;
    writeText(folder / "x.wav", floatWAV({noise(1, 100000)}));
    EXPECT_EQ(AudioIO::readMono(folder / "x.wav").samples.size(), 100000U);
    const ShortMemory memory(200000);
    expectOutOfMemory([&] { (void)AudioIO::readMono(folder / "x.wav"); });
}

TEST(AudioTrouble, WritingSaysThatMemoryIsShort) {
    const TempFolder folder;
    const std::vector<float> samples = noise(2, 100000);
    const ShortMemory memory(100000);
    try {
        AudioIO::write(samples, folder / "x.wav", 44100, OutputFormat::wav16);
        ADD_FAILURE() << "was written";
    } catch (const AudioIOError& error) {
        EXPECT_STREQ(error.what(), "Could not read x.wav: out of memory");
    }
}

TEST(AudioTrouble, ASignalThatCannotBeConvertedIsUnchanged) {
    const std::vector<float> samples = noise(3, 50000);
    std::vector<float> copy = samples;
    {
        const Raised refused(converterIsRefused);
        EXPECT_EQ(AudioIO::resample(samples, 44100, 48000), samples);
    }
    {
        const Raised failing(converterFails);
        EXPECT_EQ(AudioIO::resample(samples, 44100, 48000), samples);
    }
    {
        const ShortMemory memory(201000);  // enough for the signal, but not for the result
        copy = AudioIO::resample(std::move(copy), 44100, 48000);
    }
    EXPECT_EQ(copy, samples);
    EXPECT_NE(AudioIO::resample(samples, 44100, 48000), samples);
}

TEST(AudioTrouble, AStreamThatCannotBeConvertedSaysThatMemoryIsShort) {
    const TempFolder folder;
    writeText(folder / "x.wav", floatWAV({noise(4, 1000)}));
    const auto ignore = [](std::span<const float>) {};
    {
        const Raised refused(converterIsRefused);
        expectOutOfMemory([&] { AudioIO::stream(folder / "x.wav", 48000, ignore); });
    }
    const Raised failing(converterFails);
    expectOutOfMemory([&] { AudioIO::stream(folder / "x.wav", 48000, ignore); });
}

}  // namespace
}  // namespace quillmere
