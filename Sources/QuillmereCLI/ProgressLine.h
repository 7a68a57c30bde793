#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "QuillmereCLI/Console.h"
#include "QuillmereCore/Model/Training/TrainingProgress.h"
#include "QuillmereCore/Util/Progress.h"

namespace quillmere::cli {

// One report of long work.
struct WorkProgress {
    enum class Unit { none, step, file, sample, variation };

    std::string phase;       // "scanning", "analysing", "training", …; a table's text
    Message message;         // for people
    Unit unit = Unit::none;  // what step counts; none: counts are not shown
    std::int64_t step = 0;   // units done
    std::int64_t totalSteps = 0;
    double fraction = 0;  // of the learning or of the generating, 0 ... 1

    struct Losses {
        float loss, reconstruction, kl;
    };
    std::optional<Losses> losses;  // while and after training
    std::optional<double> secondsRemaining;
};

[[nodiscard]] WorkProgress workProgress(const TrainingProgress& progress);

// The progress as one line of at most width columns: message, bar (where there is room), share, count, loss,
// time left.
[[nodiscard]] std::string progressText(const WorkProgress& progress, std::size_t width);

// Shows the progress of one command: a line redrawn in place on a terminal, one line per phase elsewhere, an
// event per report with --json. Measures how long each phase takes.
// Threads: one at a time.
class ProgressLine {
public:
    explicit ProgressLine(Console& console) : console_(console) {}
    // Clears the line, so that a failure starts on a clean one.
    ~ProgressLine() { clear(); }
    ProgressLine(const ProgressLine&) = delete;
    ProgressLine& operator=(const ProgressLine&) = delete;

    void report(const WorkProgress& progress);
    // Ends the running phase and clears the line.
    void finish();

    struct PhaseTime {
        std::string phase;
        double seconds;
    };
    // The phases that have ended, in order.
    [[nodiscard]] const std::vector<PhaseTime>& times() const { return times_; }
    // Their names and seconds as one JSON object.
    [[nodiscard]] JSON timesJSON() const;
    // "training 1 min 2 s, finishing 0.10 s".
    [[nodiscard]] std::string timesText() const;
    // "Took 1 min 3 s (training 1 min 2 s, finishing 0.10 s)."
    [[nodiscard]] std::string tookText() const;
    [[nodiscard]] double totalSeconds() const;

private:
    using Clock = std::chrono::steady_clock;

    void enterPhase(const WorkProgress& progress, Clock::time_point now);
    void draw(const WorkProgress& progress, std::size_t width);
    void clear();

    Console& console_;
    std::string phase_;  // empty between phases
    Clock::time_point phaseStart_;
    ReportPace pace_;     // of redrawing
    bool drawn_ = false;  // the terminal's last line is ours
    std::vector<PhaseTime> times_;
};

}  // namespace quillmere::cli
