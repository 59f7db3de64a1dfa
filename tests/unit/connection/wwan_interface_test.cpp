#include "connection/wwan_interface.h"

#include <fcntl.h>
#include <unistd.h>

#include "connection_test.h"

namespace {

class InterfaceAddress : public ConnectionTest {};

TEST_F(InterfaceAddress, ComesInHostOrder) {
    SetAddress("10.64.0.2");
    EXPECT_EQ(GetInterfaceIpv4Address("wwan0"), 0x0A400002U);
    SetAddress("192.0.2.255");
    EXPECT_EQ(GetInterfaceIpv4Address("wwan0"), 0xC00002FFU);
}

TEST_F(InterfaceAddress, IsZeroForAnInterfaceWithoutOne) {
    EXPECT_EQ(GetInterfaceIpv4Address("wwan0"), 0U);
    SetAddress("0.0.0.0");
    EXPECT_EQ(GetInterfaceIpv4Address("wwan0"), 0U);
}

TEST_F(InterfaceAddress, IsZeroForAnotherInterface) {
    SetAddress("10.64.0.2");
    EXPECT_EQ(GetInterfaceIpv4Address("wwan1"), 0U);
    EXPECT_EQ(GetInterfaceIpv4Address(""), 0U);
}

TEST_F(InterfaceAddress, IsZeroWithoutASocket) {
    SetAddress("10.64.0.2");
    RefuseSockets();
    EXPECT_EQ(GetInterfaceIpv4Address("wwan0"), 0U);
}

TEST_F(InterfaceAddress, CutsANameThatIsTooLong) {
    SetAddress("10.64.0.2");
    EXPECT_EQ(GetInterfaceIpv4Address(std::string(300, 'w')), 0U);
}

TEST_F(InterfaceAddress, ClosesItsSocketWhateverTheAnswer) {
    const int before = open("/dev/null", O_RDONLY);
    close(before);
    GetInterfaceIpv4Address("wwan0");
    SetAddress("10.64.0.2");
    GetInterfaceIpv4Address("wwan0");
    const int after = open("/dev/null", O_RDONLY);
    close(after);
    EXPECT_EQ(after, before);
}

}  // namespace
