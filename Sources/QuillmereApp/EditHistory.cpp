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

void EditHistory::closeEdit() {
    if (open_ == 0) return;
    open_ = 1;
    end();
}

bool EditHistory::undo() {
    closeEdit();
    if (past_.empty()) return false;
    future_.push_back(std::exchange(current_, past_.back()));
    past_.pop_back();
    return true;
}

bool EditHistory::redo() {
    closeEdit();
    if (future_.empty()) return false;
    past_.push_back(std::exchange(current_, future_.back()));
    future_.pop_back();
    return true;
}

}  // namespace quillmere
