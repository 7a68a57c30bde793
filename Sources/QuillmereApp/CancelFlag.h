#pragma once

#include <stop_token>

namespace quillmere {

// Asks background work to stop. One flag per run; the work asks its token between units of work.
// Threads: any.
class CancelFlag {
public:
    void cancel() { source_.request_stop(); }
    [[nodiscard]] bool isCancelled() const { return source_.stop_requested(); }
    // May outlive the flag.
    [[nodiscard]] std::stop_token token() const { return source_.get_token(); }

private:
    std::stop_source source_;
};

}  // namespace quillmere
