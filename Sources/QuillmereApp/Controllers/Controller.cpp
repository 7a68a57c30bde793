#include "QuillmereApp/Controllers/Controller.h"

#include "QuillmereApp/Controllers/Assign.h"

namespace quillmere {

void Controller::setActivity(const Activity& activity) {
    assign(*this, activity_, activity, &Controller::activityChanged);
}

void Controller::report(const TaskFailure& failure) {
    if (failure.kind == TaskFailure::Kind::device) emit deviceFailed(failure.message);
    if (failure.kind != TaskFailure::Kind::cancelled) emit errorRaised(failure.message);
}

void Controller::watched(Run run, std::int64_t done) const {
    if (environment_.onProgress) environment_.onProgress(run, done);
}

}  // namespace quillmere
