#include "sms/cms_errors.h"

#include <gtest/gtest.h>

#include <string>

#include "seal.h"

namespace {

// The texts stand once, in cms_errors.cpp. All lines of the codes 0 to 600, letter by letter, have
// this seal: who changes one of them on purpose changes it, too.
// Guards oddity cms-texts-to-the-letter.
TEST(CmsErrorText, GivesEveryDescriptionToTheLetter) {
    std::string lines;
    int documented = 0;
    for (int code = 0; code <= 600; ++code) {
        const std::string line = CmsErrorText(code);
        if (line.find(": Undocumented error") == std::string::npos) ++documented;
        lines += line;
    }
    EXPECT_EQ(documented, 70);
    EXPECT_EQ(Seal(lines), 0x5b921089f9b76bU);
}

// Stray marks, a word that is none and a blank at an end belong to the texts.
TEST(CmsErrorText, KeepsTheStrayMarks) {
    EXPECT_EQ(CmsErrorText(1), "CMS error #1: Unassigned (unallocated) number");
    EXPECT_EQ(CmsErrorText(129), "CMS error #129: Short message Type 0 not supported x x");
    EXPECT_EQ(CmsErrorText(198), "CMS error #198: TP-VPF not supported X");
    EXPECT_EQ(CmsErrorText(314), "CMS error #314: SIM usynot inserted");
    EXPECT_EQ(CmsErrorText(318), "CMS error #318: SIM PUK2 required ");
    EXPECT_EQ(CmsErrorText(512), "CMS error #512: Manufacturer specific");
}

TEST(CmsErrorText, CallsEveryOtherCodeUndocumented) {
    for (const int code : {-2147483647 - 1, -600, -1, 0, 2, 319, 513, 601, 1200, 2147483647}) {
        EXPECT_EQ(CmsErrorText(code),
                  "CMS error #" + std::to_string(code) + ": Undocumented error");
    }
}

}  // namespace
