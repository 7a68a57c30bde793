#include "QuillmereCore/Util/Digest.h"

#include <openssl/crypto.h>
#include <openssl/evp.h>

#include <array>
#include <cstdint>
#include <new>

#include "QuillmereCore/Util/Failure.h"
#include "QuillmereCore/Util/Text.h"

namespace quillmere {

SHA256::SHA256() {
    // The library's own configuration file has no say here. Without effect after the first call.
    OPENSSL_init_crypto(OPENSSL_INIT_NO_LOAD_CONFIG, nullptr);
    context_.reset(EVP_MD_CTX_new());
    if (!context_ || EVP_DigestInit_ex(context_.get(), EVP_sha256(), nullptr) != 1) throw std::bad_alloc();
}

void SHA256::Free::operator()(evp_md_ctx_st* context) const {
    EVP_MD_CTX_free(context);
}

void SHA256::update(std::span<const std::byte> bytes) {
    require(context_ != nullptr, "SHA256: used after its end");
    require(EVP_DigestUpdate(context_.get(), bytes.data(), bytes.size()) == 1, "SHA256: no digest");
}

std::string SHA256::finish() {
    require(context_ != nullptr, "SHA256: used after its end");
    std::array<std::uint8_t, 32> digest{};
    require(EVP_DigestFinal_ex(context_.get(), digest.data(), nullptr) == 1, "SHA256: no digest");
    context_.reset();
    return Text::hexadecimal(digest);
}

std::string sha256(std::span<const std::byte> bytes) {
    SHA256 digest;
    digest.update(bytes);
    return digest.finish();
}

}  // namespace quillmere
