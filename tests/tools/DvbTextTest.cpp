#include <gtest/gtest.h>

#include "DvbText.h"

namespace {

TEST(DvbTextTest, CharacterTableSelectors)
{
    EXPECT_EQ(dvbTextToUtf8("ABC"), "ABC") << "the default table";
    EXPECT_EQ(dvbTextToUtf8("\x05Telecomando"), "Telecomando");
    EXPECT_EQ(dvbTextToUtf8("\x05\xDE"), "\xC5\x9E") << "ISO 8859-9: capital S with cedilla";
    EXPECT_EQ(dvbTextToUtf8("\x15\xC3\xA9t\xC3\xA9"), "\xC3\xA9t\xC3\xA9") << "UTF-8 as it is";
    EXPECT_EQ(dvbTextToUtf8(std::string("\x11\x00\x41\x04\x10", 5)), "A\xD0\x90") << "UCS-2";
    EXPECT_EQ(dvbTextToUtf8(std::string("\x10\x00\x07\xC1", 4)), "\xCE\x91") << "ISO 8859-7 by its number";
    EXPECT_EQ(dvbTextToUtf8("A\x86"
                            "B\x87"
                            "C"),
              "ABC")
        << "emphasis codes dropped";
    EXPECT_EQ(dvbTextToUtf8(""), "");
    EXPECT_EQ(dvbTextToUtf8(std::string("\x10\x00\x0C"
                                        "A\xE4",
                                        5)),
              "A\xEF\xBF\xBD")
        << "a table iconv does not have (ISO 8859-12): still UTF-8";
}

TEST(DvbTextTest, BytesThatShouldBeUtf8AreMadeValidWithoutLosingAny)
{
    EXPECT_EQ(validUtf8("Test event \xC3\xA4\xC3\xB6\xC3\xBC!"), "Test event \xC3\xA4\xC3\xB6\xC3\xBC!");
    EXPECT_EQ(validUtf8("\xE4\xF6!"), "\xEF\xBF\xBD\xEF\xBF\xBD!") << "Latin-1";
    EXPECT_EQ(validUtf8(std::string("a\0b", 3)), "a\xEF\xBF\xBD"
                                                 "b")
        << "a zero byte does not end the text";
    EXPECT_EQ(validUtf8("\xC3"), "\xEF\xBF\xBD") << "a sequence cut short";
    EXPECT_EQ(validUtf8("\xED\xA0\x80"), "\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD") << "a surrogate";
    EXPECT_EQ(validUtf8(""), "");
}

TEST(DvbTextTest, LetterCodesKeepPrintableAsciiOnly)
{
    const uint8_t deu[] = {'d', 'e', 'u'}, hostile[] = {'G', 0xC3, 0x00};
    EXPECT_EQ(letterCode(deu), "deu");
    EXPECT_EQ(letterCode(hostile), "G??");
}

}  // namespace
