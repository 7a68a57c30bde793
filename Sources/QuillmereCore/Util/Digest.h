#pragma once

#include <cstddef>
#include <memory>
#include <span>
#include <string>

struct evp_md_ctx_st;

namespace quillmere {

// SHA-256 (FIPS 180-4) of bytes that arrive in pieces of any length. One thread at a time.
class SHA256 {
public:
    SHA256();

    void update(std::span<const std::byte> bytes);
    // The digest as 64 lower-case hexadecimal digits. The last call: what follows stops the program.
    [[nodiscard]] std::string finish();

private:
    struct Free {
        void operator()(evp_md_ctx_st* context) const;
    };
    std::unique_ptr<evp_md_ctx_st, Free> context_;
};

// The digest of all bytes at once.
[[nodiscard]] std::string sha256(std::span<const std::byte> bytes);

}  // namespace quillmere
