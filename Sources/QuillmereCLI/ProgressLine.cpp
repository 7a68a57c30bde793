#include "QuillmereCLI/ProgressLine.h"

#include <algorithm>
#include <cmath>

#include "QuillmereCLI/Wording.h"
#include "QuillmereCore/Util/Text.h"

namespace quillmere::cli {
namespace {

constexpr std::size_t smallestBar = 10;
constexpr std::size_t largestBar = 30;

std::string joined(const std::vector<std::string>& parts) {
    std::string text;
    for (const std::string& part : parts) {
        if (!text.empty()) text += "  ";
        text += part;
    }
    return text;
}

std::string bar(double fraction, std::size_t width) {
    const auto filled = static_cast<std::size_t>(std::lround(fraction * static_cast<double>(width)));
    return "[" + std::string(filled, '#') + std::string(width - filled, '.') + "]";
}

std::string plural(std::string_view unit, std::int64_t count) {
    return counted(count, unit, std::string(unit) + "s");
}

// The one line that stands for a phase where nothing can be redrawn.
std::string phaseText(const WorkProgress& progress) {
    if (progress.unit.empty()) return printable(progress.message);
    return printable(progress.message) + " " + plural(progress.unit, progress.totalSteps);
}

}  // namespace

WorkProgress workProgress(const TrainingProgress& progress) {
    WorkProgress work;
    work.phase = rawValue(progress.phase);
    work.message = progress.message;
    work.step = progress.step;
    work.totalSteps = progress.totalSteps;
    work.fraction = progress.fraction;
    work.secondsRemaining = progress.secondsRemaining;
    if (progress.phase == TrainingProgress::Phase::training) work.unit = "step";
    if (progress.phase != TrainingProgress::Phase::analysing)
        work.losses = WorkProgress::Losses{progress.loss, progress.reconstruction, progress.kl};
    return work;
}

std::string progressText(const WorkProgress& progress, std::size_t width) {
    const double fraction = std::isfinite(progress.fraction) ? std::clamp(progress.fraction, 0.0, 1.0) : 0.0;
    std::vector<std::string> parts{printable(progress.message)};
    parts.push_back(Text::fixed(std::floor(fraction * 100), 0) + " %");
    if (!progress.unit.empty()) {
        parts.push_back(std::string(progress.unit) + " " + std::to_string(progress.step) + "/" +
                        std::to_string(progress.totalSteps));
    }
    if (!progress.unit.empty() && progress.losses)
        parts.push_back("loss " + Text::fixed(static_cast<double>(progress.losses->loss), 4));
    if (progress.secondsRemaining) parts.push_back(roughDuration(*progress.secondsRemaining) + " left");

    constexpr std::size_t frame = 4;  // brackets and two blanks
    const std::size_t used = columns(joined(parts));
    if (used + frame + smallestBar <= width) {
        const std::size_t barWidth = std::min(width - used - frame, largestBar);
        parts.insert(parts.begin() + 1, bar(fraction, barWidth));
    }
    return cutToWidth(joined(parts), width);
}

void ProgressLine::report(const WorkProgress& progress) {
    const auto now = Clock::now();
    const bool entered = progress.phase != phase_;
    if (entered) enterPhase(progress, now);

    if (console_.json()) {
        JSON event = makeEvent("progress");
        event["phase"] = progress.phase;
        event["message"] = progress.message;
        event["step"] = progress.step;
        event["totalSteps"] = progress.totalSteps;
        event["fraction"] = progress.fraction;
        if (progress.losses) {
            event["loss"] = progress.losses->loss;
            event["reconstruction"] = progress.losses->reconstruction;
            event["kl"] = progress.losses->kl;
        }
        if (progress.secondsRemaining) event["secondsRemaining"] = *progress.secondsRemaining;
        console_.emit(event);
    } else if (const auto width = console_.terminalWidth()) {
        draw(progress, *width);
    } else if (entered) {
        console_.note(phaseText(progress));
    }
}

void ProgressLine::enterPhase(const WorkProgress& progress, Clock::time_point now) {
    if (!phase_.empty()) times_.push_back({phase_, std::chrono::duration<double>(now - phaseStart_).count()});
    phase_ = progress.phase;
    phaseStart_ = now;
    pace_.reset();
}

void ProgressLine::draw(const WorkProgress& progress, std::size_t width) {
    if (!pace_.isDue()) return;
    // The last column stays free: some terminals wrap as soon as it is written.
    console_.redraw(progressText(progress, width > 1 ? width - 1 : 1));
    drawn_ = true;
}

void ProgressLine::clear() {
    if (drawn_) console_.redraw("");
    drawn_ = false;
}

void ProgressLine::finish() {
    if (!phase_.empty())
        times_.push_back({phase_, std::chrono::duration<double>(Clock::now() - phaseStart_).count()});
    phase_.clear();
    clear();
}

JSON ProgressLine::timesJSON() const {
    JSON object = JSON::object();
    for (const PhaseTime& time : times_)
        object[time.phase] = time.seconds;
    return object;
}

std::string ProgressLine::timesText() const {
    std::string text;
    for (const PhaseTime& time : times_) {
        if (!text.empty()) text += ", ";
        text += time.phase + " " + duration(time.seconds);
    }
    return text;
}

double ProgressLine::totalSeconds() const {
    double total = 0;
    for (const PhaseTime& time : times_)
        total += time.seconds;
    return total;
}

}  // namespace quillmere::cli
