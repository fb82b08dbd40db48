#include "app/md5/md5.h"

#include <sstream>

#include <gtest/gtest.h>

namespace {

std::string Digest(std::string_view i_text) {
    MD5 l_md5;
    l_md5.update(i_text);
    l_md5.finalize();
    return l_md5.hex_digest();
}

} // namespace

TEST(MD5, GivesTheDigestsOfItsStandard) {
    EXPECT_EQ(Digest(""), "d41d8cd98f00b204e9800998ecf8427e");
    EXPECT_EQ(Digest("abc"), "900150983cd24fb0d6963f7d28e17f72");
    EXPECT_EQ(Digest("12345678901234567890123456789012345678901234567890123456789012345678901234567890"),
              "57edf4a22be3c955ac49da2e2107b67a");
}

TEST(MD5, PiecesStreamsAndFilesAgree) {
    const std::string l_text(20'000, 'x'); // more than one block of reading
    const std::string l_digest = Digest(l_text);
    MD5 l_pieces;
    l_pieces.update(std::string_view(l_text).substr(0, 7));
    l_pieces.update(std::string_view(l_text).substr(7));
    l_pieces.finalize();
    EXPECT_EQ(l_pieces.hex_digest(), l_digest);
    EXPECT_EQ(l_pieces.raw_digest()[0], std::stoi(l_digest.substr(0, 2), nullptr, 16));
    EXPECT_EQ(l_pieces.raw_digest()[15], std::stoi(l_digest.substr(30), nullptr, 16));

    std::istringstream l_stream(l_text);
    EXPECT_EQ(MD5(l_stream).hex_digest(), l_digest);
    std::FILE* const lp_file = std::tmpfile();
    ASSERT_TRUE(lp_file);
    std::fwrite(l_text.data(), 1, l_text.size(), lp_file);
    std::rewind(lp_file);
    EXPECT_EQ(MD5(lp_file).hex_digest(), l_digest);
    std::fclose(lp_file);
}

TEST(MD5DeathTest, OrderOfUseIsAContract) {
    MD5 l_md5;
    EXPECT_DEATH((void)l_md5.hex_digest(), "m_finalized");
    l_md5.finalize();
    EXPECT_DEATH(l_md5.update("more"), "!m_finalized");
    EXPECT_DEATH(l_md5.finalize(), "!m_finalized");
}
