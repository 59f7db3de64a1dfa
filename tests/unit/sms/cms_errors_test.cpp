#include "sms/cms_errors.h"

#include <gtest/gtest.h>

#include <map>
#include <string>

namespace {

// Stray "x" and "X" marks, "usynot" and the blank behind "PUK2 required" belong to the texts.
const std::map<int, std::string> kDescriptions = {
    {1, "Unassigned (unallocated) number"},
    {8, "Operator determined barring"},
    {10, "Call barred"},
    {21, "Short message transfer rejected"},
    {27, "Destination out of service"},
    {28, "Unidentified subscriber"},
    {29, "Facility rejected"},
    {30, "Unknown subscriber"},
    {38, "Network out of order"},
    {41, "Temporary failure"},
    {42, "Congestion"},
    {47, "Resources unavailable, unspecified"},
    {50, "Requested facility not subscribed"},
    {69, "Requested facility not implemented"},
    {81, "Invalid short message transfer reference value"},
    {95, "Invalid message, unspecified"},
    {96, "Invalid mandatory information"},
    {97, "Message type non-existent or not implemented"},
    {99, "Information element non-existent or not implemented"},
    {111, "Protocol error, unspecified"},
    {127, "Interworking, unspecified"},
    {128, "Telematic interworking not supported x"},
    {129, "Short message Type 0 not supported x x"},
    {130, "Cannot replace short message x x"},
    {143, "Unspecified TP-PID error x x"},
    {144, "Data coding scheme (alphabet) not supported x"},
    {145, "Message class not supported x"},
    {159, "Unspecified TP-DCS error x x"},
    {160, "Command cannot be actioned x"},
    {161, "Command unsupported x"},
    {175, "Unspecified TP-Command error x"},
    {176, "TPDU not supported x x"},
    {192, "SC busy x"},
    {193, "No SC subscription x"},
    {194, "SC system failure x"},
    {195, "Invalid SME address x"},
    {196, "Destination SME barred x"},
    {197, "SM Rejected-Duplicate SM x"},
    {198, "TP-VPF not supported X"},
    {199, "TP-VP not supported X"},
    {208, "SIM SMS storage full x"},
    {209, "No SMS storage capability in SIM x"},
    {210, "Error in MS x"},
    {211, "Memory Capacity Exceeded X"},
    {212, "SIM Application Toolkit Busy x x"},
    {255, "Unspecified error cause"},
    {300, "Phone error"},
    {301, "SMS service of phone reserved"},
    {302, "Operation not allowed"},
    {303, "Operation not supported"},
    {304, "Invalid PDU mode parameter"},
    {305, "Invalid text mode parameter"},
    {310, "SIM not inserted"},
    {311, "SIM PIN necessary"},
    {312, "PH-SIM PIN necessary"},
    {313, "SIM failure"},
    {314, "SIM usynot inserted"},
    {315, "SIM wrong"},
    {316, "SIM PUK required"},
    {317, "SIM PIN2 required"},
    {318, "SIM PUK2 required "},
    {320, "Memory failure"},
    {321, "Invalid memory index"},
    {322, "Memory full"},
    {330, "SMSC (message service center) address unknown"},
    {331, "No network service"},
    {332, "Network timeout"},
    {340, "No +CNMA acknowledgement expected"},
    {500, "Unknown error"},
    {512, "Manufacturer specific"},
};

}  // namespace

// Guards oddity cms-texts-to-the-letter.
TEST(CmsErrorText, GivesEveryDescriptionToTheLetter) {
    ASSERT_EQ(kDescriptions.size(), 70u);
    for (const auto& [code, description] : kDescriptions) {
        SCOPED_TRACE(code);
        EXPECT_EQ(CmsErrorText(code), "CMS error #" + std::to_string(code) + ": " + description);
    }
}

TEST(CmsErrorText, CallsEveryOtherCodeUndocumented) {
    for (int code = -600; code <= 1200; ++code) {
        if (kDescriptions.count(code) > 0) continue;
        SCOPED_TRACE(code);
        EXPECT_EQ(CmsErrorText(code),
                  "CMS error #" + std::to_string(code) + ": Undocumented error");
    }
}

TEST(CmsErrorText, TakesTheLimitsOfAnInt) {
    EXPECT_EQ(CmsErrorText(2147483647), "CMS error #2147483647: Undocumented error");
    EXPECT_EQ(CmsErrorText(-2147483647 - 1), "CMS error #-2147483648: Undocumented error");
}
