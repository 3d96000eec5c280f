#include "foundation/digest.h"

#include <gtest/gtest.h>

namespace marlet {

TEST(Sha256, GivesTheDigestsOfTheStandardsExamples) {
    EXPECT_EQ(sha256Hex({}), "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855");
    EXPECT_EQ(sha256Hex(viewOf("abc")),
              "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad");
    EXPECT_EQ(sha256Hex(viewOf("abcdbcdecdefdefgefghfghighijhijkijkljklmklmnlmnomnopnopq")),
              "248d6a61d20638b8e5c026930c3e6039a33ce45964ff2167f6ecedd419db06c1");
}

TEST(Sha256, PiecesGiveTheDigestOfTheWhole) {
    Sha256 digest;
    digest.update(viewOf("a"));
    digest.update({});
    Sha256 moved = std::move(digest);
    moved.update(viewOf("bc"));
    EXPECT_EQ(moved.hex(), sha256Hex(viewOf("abc")));
}

TEST(Sha256, OneObjectMakesManyDigests) {
    Sha256 digest;
    for (int i = 0; i < 2; i++) {
        digest.update(viewOf("abc"));
        EXPECT_EQ(toHex(digest.restart()), sha256Hex(viewOf("abc")));
    }
    EXPECT_EQ(digest.hex(), sha256Hex({}));
}

}  // namespace marlet
