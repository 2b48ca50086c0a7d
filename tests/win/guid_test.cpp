// The exported GUID text functions on the platform's own _GUID.
#include "VellBase.h"

#include <gtest/gtest.h>

#include <cstring>

namespace {

// IDirectDrawSurface2's interface identifier, customarily 57805885-6EEC-11CF-9441-A82303C10E27.
const _GUID kSurface2 = {
    0x57805885, 0x6EEC, 0x11CF, {0x94, 0x41, 0xA8, 0x23, 0x03, 0xC1, 0x0E, 0x27}};

TEST(GuidExports, TextShowsTheBytesInMemoryOrder) {
    char text[64];
    std::memset(text, '#', sizeof text);
    GUID2str(kSurface2, text);
    EXPECT_STREQ(text, "{85588057-EC6E-CF11-9441-A82303C10E27}");

    _GUID back;
    std::memset(&back, 0xEE, sizeof back);
    str2GUID(text, &back);
    EXPECT_TRUE(IsEqualGUID(back, kSurface2));
}

TEST(GuidExports, ZeroTextIsTheDefaultDevice) {
    _GUID guid;
    std::memset(&guid, 0xEE, sizeof guid);
    str2GUID("{00000000-0000-0000-0000-000000000000}", &guid);
    EXPECT_TRUE(IsEqualGUID(guid, GUID_NULL));

    char text[39];
    GUID2str(GUID_NULL, text);
    EXPECT_STREQ(text, "{00000000-0000-0000-0000-000000000000}");
}

TEST(GuidExports, ShortOrNullArgumentsAreHarmless) {
    _GUID guid;
    std::memset(&guid, 0xEE, sizeof guid);
    str2GUID("{85588057-EC6E", &guid);
    const unsigned char expected[16] = {0x85, 0x58, 0x80, 0x57, 0xEC, 0x6E};
    EXPECT_EQ(std::memcmp(&guid, expected, sizeof expected), 0);

    str2GUID(nullptr, &guid);
    EXPECT_TRUE(IsEqualGUID(guid, GUID_NULL));
    str2GUID("{85588057-EC6E-CF11-9441-A82303C10E27}", nullptr);
    GUID2str(kSurface2, nullptr);
}

} // namespace
