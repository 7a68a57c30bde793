#include "QuillmereCLI/ProgressLine.h"

#include <algorithm>
#include <cmath>

#include "QuillmereCLI/Wording.h"
#include "QuillmereCore/Util/Failure.h"
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

std::string shown(const Message& message) {
    return printable(Language::text(message));
}

// "10 variations"
std::string amount(WorkProgress::Unit unit, std::int64_t count) {
    switch (unit) {
        case WorkProgress::Unit::none:
            break;
        case WorkProgress::Unit::step:
            return trCounted(count, "{0} step", "{0} steps");
        case WorkProgress::Unit::file:
            return trCounted(count, "{0} file", "{0} files");
        case WorkProgress::Unit::sample:
            return trCounted(count, "{0} sample", "{0} samples");
        case WorkProgress::Unit::variation:
            return trCounted(count, "{0} variation", "{0} variations");
    }
    fatal("nothing is counted");
}

// "variation 3/10"
std::string position(const WorkProgress& progress) {
    switch (progress.unit) {
        case WorkProgress::Unit::none:
            break;
        case WorkProgress::Unit::step:
            return tr("step {0}/{1}", progress.step, progress.totalSteps);
        case WorkProgress::Unit::file:
            return tr("file {0}/{1}", progress.step, progress.totalSteps);
        case WorkProgress::Unit::sample:
            return tr("sample {0}/{1}", progress.step, progress.totalSteps);
        case WorkProgress::Unit::variation:
            return tr("variation {0}/{1}", progress.step, progress.totalSteps);
    }
    fatal("nothing is counted");
}

// The one line that stands for a phase where nothing can be redrawn.
std::string phaseText(const WorkProgress& progress) {
    if (progress.unit == WorkProgress::Unit::none) return shown(progress.message);
    return shown(progress.message) + " " + amount(progress.unit, progress.totalSteps);
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
    if (progress.phase == TrainingProgress::Phase::training) work.unit = WorkProgress::Unit::step;
    if (progress.phase != TrainingProgress::Phase::analysing)
        work.losses = WorkProgress::Losses{progress.loss, progress.reconstruction, progress.kl};
    return work;
}

std::string progressText(const WorkProgress& progress, std::size_t width) {
    const double fraction = std::isfinite(progress.fraction) ? std::clamp(progress.fraction, 0.0, 1.0) : 0.0;
    const bool counts = progress.unit != WorkProgress::Unit::none;
    std::vector<std::string> parts{shown(progress.message)};
    parts.push_back(Text::fixed(std::floor(fraction * 100), 0) + " %");
    if (counts) parts.push_back(position(progress));
    if (counts && progress.losses)
        parts.push_back(tr("loss {0}", Text::fixed(static_cast<double>(progress.losses->loss), 4)));
    if (progress.secondsRemaining) parts.push_back(tr("{0} left", roughDuration(*progress.secondsRemaining)));

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
        event["message"] = progress.message.english();
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
        const std::string part = trTable(time.phase) + " " + duration(time.seconds);
        text = text.empty() ? part : tr("{0}, {1}", text, part);
    }
    return text;
}

std::string ProgressLine::tookText() const {
    return tr("Took {0} ({1}).", duration(totalSeconds()), timesText());
}

double ProgressLine::totalSeconds() const {
    double total = 0;
    for (const PhaseTime& time : times_)
        total += time.seconds;
    return total;
}

}  // namespace quillmere::cli
