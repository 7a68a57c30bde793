#pragma once

#include <sys/fsuid.h>
#include <unistd.h>

namespace quillmere::testing {

// While it lives, the calling thread touches files as an unprivileged user: permissions do not stop root.
// Without effect when the tests do not run as root.
class OtherUser {
public:
    OtherUser() {
        if (::geteuid() == 0) ::setfsuid(nobody);
    }
    ~OtherUser() { ::setfsuid(::geteuid()); }
    OtherUser(const OtherUser&) = delete;
    OtherUser& operator=(const OtherUser&) = delete;

private:
    static constexpr uid_t nobody = 65534;
};

}  // namespace quillmere::testing
