#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <optional>

namespace quillmere {

// Hears how many units of long work (files, variations) are done, of how many. May be empty. Work on several
// threads calls it from any of them, one at a time.
using CountProgress = std::function<void(std::int64_t done, std::int64_t total)>;

// How often someone who looks on is told: at most every 50 ms, which the eye takes for steady, of work that
// may report thousands of times a second. Threads: one at a time.
class ReportPace {
public:
    using Clock = std::chrono::steady_clock;
    static constexpr std::chrono::milliseconds interval{50};

    // Whether a report is due; if so, none is for the interval that follows. The first is.
    bool isDue(Clock::time_point now = Clock::now()) {
        if (last_ && now - *last_ < interval) return false;
        last_ = now;
        return true;
    }
    // Makes the next report due.
    void reset() { last_.reset(); }

private:
    std::optional<Clock::time_point> last_;
};

}  // namespace quillmere
