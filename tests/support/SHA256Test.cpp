#include <gtest/gtest.h>

#include <string>

#include "tesmo_hbbtv/sha256.h"

namespace {

std::string digestOf(const std::string& data)
{
    SHA256 sha;
    sha.input(data.data(), static_cast<unsigned>(data.size()));
    return sha.getResultString();
}

TEST(SHA256Test, MatchesTheFipsExampleVectors)
{
    EXPECT_EQ(digestOf(""), "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855");
    EXPECT_EQ(digestOf("abc"), "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad");
    EXPECT_EQ(digestOf("abcdbcdecdefdefgefghfghighijhijkijkljklmklmnlmnomnopnopq"),
              "248d6a61d20638b8e5c026930c3e6039a33ce45964ff2167f6ecedd419db06c1");
    EXPECT_EQ(digestOf("abcdefghbcdefghicdefghijdefghijkefghijklfghijklmghijklmnhijklmnoijklmnopjklmnopq"
                       "klmnopqrlmnopqrsmnopqrstnopqrstu"),
              "cf5b16a778af8380036ce59e7b0492370b249b11e8f07a51afac45037afee9d1");
}

TEST(SHA256Test, OneMillionTimesTheLetterA)
{
    SHA256 sha;
    for (int i = 0; i < 1000000; ++i)
        sha.input('a');
    EXPECT_EQ(sha.getResultString(), "cdc76e5c9914fb9281a1c7e284d73e67f1809a48a497200e046d39ccc7112cd0");
}

TEST(SHA256Test, PaddingSpillsIntoASecondBlockFrom56Bytes)
{
    EXPECT_EQ(digestOf(std::string(55, 'a')), "9f4390f8d30c2dd92ec9f095b65e2b9ae9b0a925a5258e241c9f1e910f734318");
    EXPECT_EQ(digestOf(std::string(56, 'a')), "b35439a4ac6f0948b6d6f9e3c6af0f5f590ce20f1bde7090ef7970686ec6738a");
    EXPECT_EQ(digestOf(std::string(64, 'a')), "ffe054fe7ae0cb6dc65c3af9b61d5209f439851db43d0ba5997337df154668eb");
}

TEST(SHA256Test, StreamedTextAndPiecewiseInputGiveTheSameDigest)
{
    SHA256 streamed;
    streamed << "ab"
             << ""
             << "c";
    EXPECT_EQ(streamed.getResultString(), digestOf("abc"));

    SHA256 empty;
    empty << "" << static_cast<const char*>(nullptr);
    empty.input(nullptr, 5);
    EXPECT_EQ(empty.getResultString(), digestOf(""));
}

TEST(SHA256Test, RotationCountsAreTakenModulo32)
{
    const SHA256 sha;
    for (int bits : {0, 32, 64})
        EXPECT_EQ(sha.rotateRight(0x80000001u, bits), 0x80000001u) << bits;
    EXPECT_EQ(sha.rotateRight(0x80000001u, 33), 0xC0000000u);
}

TEST(SHA256Test, EveryResultPadsAgainUntilReset)
{
    SHA256 sha;
    sha << "abc";
    unsigned first[8];
    sha.result(first);
    const std::string second = sha.getResultString();
    const std::string third = sha.getResultString();
    EXPECT_NE(second, digestOf("abc"));
    EXPECT_NE(third, second);

    sha.reset();
    sha << "abc";
    EXPECT_EQ(sha.getResultString(), digestOf("abc"));
    EXPECT_EQ(first[0], 0xba7816bfu);
    EXPECT_EQ(first[7], 0xf20015adu);
}

}  // namespace
