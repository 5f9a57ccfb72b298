// Routing tables as the kernel prints them.
#include "virtual-tv/routes.h"

#include <gtest/gtest.h>

#include <sstream>

namespace {

constexpr char kHeading[] =
    "Iface\tDestination\tGateway \tFlags\tRefCnt\tUse\tMetric\tMask\t\tMTU\tWindow\tIRTT\n";
constexpr char kLocal4[] = "eth0\t0011AC00\t00000000\t0001\t0\t0\t0\t00FFFFFF\t0\t0\t0\n";
constexpr char kDefault4[] = "eth0\t00000000\t0111AC00\t0003\t0\t0\t0\t00000000\t0\t0\t0\n";
// Every address that begins with a zero, as a virtual private network sets it.
constexpr char kHalf4[] = "tun0\t00000000\t0111AC00\t0003\t0\t0\t0\t00000080\t0\t0\t0\n";
constexpr char kDown4[] = "eth0\t00000000\t0111AC00\t0002\t0\t0\t0\t00000000\t0\t0\t0\n";

#define ZERO "00000000000000000000000000000000"
constexpr char kLocal6[] = "fd000000000000000000000000000000 40 " ZERO " 00 " ZERO
                           " 00000100 00000001 00000000 00000001     eth0\n";
constexpr char kDefault6[] = ZERO " 00 " ZERO
                                  " 00 fd000000000000000000000000000001 00000400 00000003 00000000 "
                                  "00000003     eth0\n";
// What a machine without any IPv6 has.
constexpr char kReject6[] =
    ZERO " 00 " ZERO " 00 " ZERO " ffffffff 00000001 00000000 00200200       lo\n";

bool Online(const std::string& ipv4, const std::string& ipv6) {
    std::istringstream four(ipv4);
    std::istringstream six(ipv6);
    return vtv::HasDefaultGateway(four, six);
}

}  // namespace

TEST(Routes, ADefaultRouteOfEitherKindIsEnough) {
    EXPECT_TRUE(Online(std::string(kHeading) + kLocal4 + kDefault4, ""));
    EXPECT_TRUE(Online(std::string(kHeading) + kLocal4, std::string(kLocal6) + kDefault6));
    EXPECT_TRUE(Online("", std::string(kReject6) + kDefault6));
}

TEST(Routes, LocalRejectingAndPartialRoutesLeadNowhere) {
    EXPECT_FALSE(Online("", ""));
    EXPECT_FALSE(Online(kHeading, kReject6));
    EXPECT_FALSE(
        Online(std::string(kHeading) + kLocal4 + kHalf4 + kDown4, std::string(kLocal6) + kReject6));
    EXPECT_FALSE(Online(std::string(kHeading) + "garbage\n", "garbage\n"));
}
