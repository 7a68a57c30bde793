#include "QuillmereCore/Util/Digest.h"

#include <gtest/gtest.h>

#include <string>

#include "Support/TempFolder.h"

namespace quillmere {
namespace {

using testing::bytesOf;

// The examples of the standard (FIPS 180-4) and of its test suite.
TEST(Digest, IsSHA256) {
    EXPECT_EQ(sha256({}), "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855");
    EXPECT_EQ(sha256(bytesOf("abc")), "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad");
    EXPECT_EQ(sha256(bytesOf("abcdbcdecdefdefgefghfghighijhijkijkljklmklmnlmnomnopnopq")),
              "248d6a61d20638b8e5c026930c3e6039a33ce45964ff2167f6ecedd419db06c1");
    EXPECT_EQ(sha256(bytesOf(std::string(1'000'000, 'a'))),
              "cdc76e5c9914fb9281a1c7e284d73e67f1809a48a497200e046d39ccc7112cd0");
}

TEST(Digest, DoesNotDependOnThePieces) {
    const std::string text =
        "The quick brown fox jumps over the lazy dog, again and again and again and again.";
    for (const std::size_t piece : {std::size_t{1}, std::size_t{7}, std::size_t{64}, text.size()}) {
        SHA256 digest;
        for (std::size_t at = 0; at < text.size(); at += piece)
            digest.update(bytesOf(text.substr(at, piece)));
        digest.update({});
        EXPECT_EQ(digest.finish(), sha256(bytesOf(text))) << piece;
    }
}

TEST(DigestDeathTest, EndsWithItsResult) {
    SHA256 digest;
    (void)digest.finish();
    EXPECT_DEATH((void)digest.finish(), "SHA256: used after its end");
}

}  // namespace
}  // namespace quillmere
