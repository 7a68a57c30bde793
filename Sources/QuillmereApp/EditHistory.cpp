#include "QuillmereApp/EditHistory.h"

#include <utility>

namespace quillmere {

void EditHistory::begin() {
    if (open_++ == 0) beforeEdit_ = current_;
}

void EditHistory::end() {
    if (open_ == 0) return;
    if (--open_ == 0 && beforeEdit_ != current_) remember(beforeEdit_);
}

void EditHistory::change(Character next) {
    if (next == current_) return;
    if (open_ == 0) remember(current_);
    current_ = std::move(next);
}

void EditHistory::remember(Character state) {
    if (past_.size() == limit) past_.erase(past_.begin());
    past_.push_back(std::move(state));
    future_.clear();
}

bool EditHistory::undo() {
    return step(past_, future_);
}

bool EditHistory::redo() {
    return step(future_, past_);
}

bool EditHistory::step(std::vector<Character>& from, std::vector<Character>& to) {
    if (open_ > 0 && beforeEdit_ != current_) remember(beforeEdit_);
    const bool moved = !from.empty();
    if (moved) {
        to.push_back(std::exchange(current_, from.back()));
        from.pop_back();
    }
    beforeEdit_ = current_;  // of an edit that is open still
    return moved;
}

}  // namespace quillmere
