#include "phone/AttemptLimit.h"
#include "phone/CookieHeader.h"
#include "phone/DeviceBook.h"
#include "phone/OneTimeCodes.h"
#include "phone/PhoneAddress.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <set>

namespace velmo {
namespace {

/// Counts up, so that no two secrets are the same.
FillWithRandomBytes counting() {
    return [next = std::uint8_t{0}](std::span<std::uint8_t> bytes) mutable {
        bytes.front() = next++;
        bytes.back() = 0xAF;
    };
}

DeviceBook::Services services() {
    return {.random = counting(),
            .hash = [](ByteView bytes) { return Bytes(bytes.rbegin(), bytes.rend()); }};
}

TEST(PhoneAddress, ReadsAnAddressFromOutsideAsAnOrigin) {
    struct Case {
        std::string_view url;
        std::optional<std::string> origin;
    };

    for (const auto& [url, origin] : std::to_array<Case>({
             {"https://mac.example.net", "https://mac.example.net"},
             {"https://mac.example.net/", "https://mac.example.net"},
             {"HTTPS://Mac.Example.net:443", "https://mac.example.net"},
             {"https://mac.example.net:80", "https://mac.example.net:80"},
             {"http://mac:80/", "http://mac"},
             {"http://10.0.0.7:8080", "http://10.0.0.7:8080"},
             {"https://[FD00::1]:8443", "https://[fd00::1]:8443"},
             {"https://mac:", "https://mac"},
             {"", {}},
             {"mac.example.net", {}},
             {"ftp://mac", {}},
             {"https://", {}},
             {"https://me@mac", {}},
             {"https://mac/velmo", {}},
             {"https://mac/?", {}},
             {"https://mac/#", {}},
             {"https://mac:0", {}},
             {"https://mac:65536", {}},
             {"https://m%41c", {}},
             {"https://mac;x", {}},
         }))
        EXPECT_EQ(PhoneAddress::outsideOrigin(url), origin) << url;
    EXPECT_FALSE(PhoneAddress::outsideOrigin("https://" + std::string(254, 'a')));
}

TEST(PhoneAddress, AcceptsLoopbackWithItsPortAndTheOutside) {
    const PhoneAddress alone(4711, {});
    const PhoneAddress both(4711, "https://mac.example.net");
    const PhoneAddress unusual(4711, "http://mac:8080");

    struct Case {
        std::string_view host;
        bool isAlone;
        bool isBoth;
        bool isUnusual;
    };

    for (const auto& [host, isAlone, isBoth, isUnusual] : std::to_array<Case>({
             {"127.0.0.1:4711", true, true, true},
             {"localhost:4711", true, true, true},
             {"LocalHost:4711", true, true, true},
             {"[::1]:4711", true, true, true},
             {"mac.example.net", false, true, false},
             {"MAC.example.net", false, true, false},
             {"mac.example.net:443", false, true, false},
             {"mac:8080", false, false, true},
             {"mac.example.net:80", false, false, false},
             {"mac.example.net:4711", false, false, false},
             {"mac.example.net.", false, false, false},
             {"mac", false, false, false},
             {"127.0.0.1", false, false, false},
             {"127.0.0.1:4712", false, false, false},
             {"127.0.0.2:4711", false, false, false},
             {"evil.example:4711", false, false, false},
             {"", false, false, false},
         })) {
        EXPECT_EQ(alone.isHost(host), isAlone) << host;
        EXPECT_EQ(both.isHost(host), isBoth) << host;
        EXPECT_EQ(unusual.isHost(host), isUnusual) << host;
    }
    for (const auto& [origin, isAlone, isBoth, isUnusual] : std::to_array<Case>({
             {"http://127.0.0.1:4711", true, true, true},
             {"http://localhost:4711", true, true, true},
             {"http://[::1]:4711", true, true, true},
             {"https://mac.example.net", false, true, false},
             {"http://mac:8080", false, false, true},
             {"http://mac.example.net", false, false, false},
             {"https://mac.example.net:443", false, false, false},
             {"https://127.0.0.1:4711", false, false, false},
             {"http://127.0.0.1:4712", false, false, false},
             {"http://evil.example", false, false, false},
             {"null", false, false, false},
             {"", false, false, false},
         })) {
        EXPECT_EQ(alone.isOrigin(origin), isAlone) << origin;
        EXPECT_EQ(both.isOrigin(origin), isBoth) << origin;
        EXPECT_EQ(unusual.isOrigin(origin), isUnusual) << origin;
    }
    EXPECT_EQ(alone.page(), "http://127.0.0.1:4711/");
    EXPECT_EQ(both.page(), "https://mac.example.net/");
    EXPECT_TRUE(both.isEncrypted());
    EXPECT_FALSE(alone.isEncrypted() || unusual.isEncrypted());
}

TEST(CookieHeader, FindsTheOneCookieOfAName) {
    struct Case {
        std::string_view header;
        std::optional<std::string_view> value;
    };

    for (const auto& [header, value] : std::to_array<Case>({
             {"a=1", "1"},
             {"b=2; a=1; c=3", "1"},
             {"b=2;\ta=1 ", "1"},
             {"a=1=2", "1=2"},
             {"a=", ""},
             {"", {}},
             {"a", {}},
             {"aa=1; A=1; =1", {}},
             {"a=1; a=1", {}},
         }))
        EXPECT_EQ(cookieIn(header, "a"), value) << header;
}

TEST(OneTimeCodes, EachLetsOneDeviceInForTwoMinutes) {
    OneTimeCodes codes(counting());
    const std::string code = codes.issue(DeviceRights::view, SteadyTime{0});
    const std::string late = codes.issue(DeviceRights::use, SteadyTime{0});
    EXPECT_EQ(code, "00" + std::string(28, '0') + "af");
    EXPECT_EQ(late, "01" + std::string(28, '0') + "af");
    for (const std::string& wrong :
         {std::string(), code.substr(1), code + "0", "1" + code.substr(1)})
        EXPECT_EQ(codes.take(wrong, SteadyTime{1}), std::nullopt) << wrong;
    EXPECT_EQ(codes.take(code, SteadyTime{119.9}), DeviceRights::view);
    EXPECT_EQ(codes.take(code, SteadyTime{119.9}), std::nullopt);
    EXPECT_EQ(codes.take(late, SteadyTime{120}), std::nullopt);

    const std::string oldest = codes.issue(DeviceRights::use, SteadyTime{200});
    const std::string second = codes.issue(DeviceRights::use, SteadyTime{200});
    for (std::size_t i = 1; i < OneTimeCodes::maxCodes; ++i)
        codes.issue(DeviceRights::use, SteadyTime{200});
    EXPECT_EQ(codes.take(oldest, SteadyTime{200}), std::nullopt);
    EXPECT_EQ(codes.take(second, SteadyTime{200}), DeviceRights::use);
}

TEST(AttemptLimit, TakesTenAtOnceAndThenOneASecond) {
    AttemptLimit limit;
    const auto taken = [&](double now, int tries) {
        int count = 0;
        while (tries-- > 0)
            count += limit.take(SteadyTime{now}) ? 1 : 0;
        return count;
    };
    EXPECT_EQ(taken(1000, 10000), 10);
    EXPECT_EQ(taken(1000.9, 5), 0);
    EXPECT_EQ(taken(1003, 5), 3);
    EXPECT_EQ(taken(9999, 20), 10);
}

TEST(DeviceBook, KnowsADeviceByItsCookieForThirtyDays) {
    DeviceBook book(services(), {});
    const std::string phone = book.add("phone", DeviceRights::use, WallTime{1000});
    const std::string tablet = book.add("tablet", DeviceRights::view, WallTime{2000});
    EXPECT_EQ(phone.size(), 64U);
    ASSERT_NE(book.find(phone, WallTime{1000}), nullptr);
    EXPECT_EQ(book.find(phone, WallTime{1000})->name, "phone");
    EXPECT_EQ(book.find(tablet, WallTime{2000})->rights, DeviceRights::view);
    for (const std::string& wrong :
         {std::string(), phone.substr(1), book.find(phone, WallTime{1000})->secret})
        EXPECT_EQ(book.find(wrong, WallTime{1000}), nullptr) << wrong;
    constexpr double month = 30.0 * 24 * 3600;
    EXPECT_NE(book.find(phone, WallTime{1000 + month - 1}), nullptr);
    EXPECT_EQ(book.find(phone, WallTime{1000 + month}), nullptr);
    EXPECT_EQ(book.find(phone, WallTime{999}), nullptr);
    EXPECT_THAT(book.devices(WallTime{1000 + month}),
                testing::ElementsAre(testing::Field(&Device::name, "tablet")));
    EXPECT_EQ(
        DeviceBook(services(), book.devices(WallTime{2000})).find(phone, WallTime{2000})->name,
        "phone");

    EXPECT_FALSE(book.remove("nothing"));
    EXPECT_TRUE(book.remove("phone"));
    EXPECT_EQ(book.find(phone, WallTime{1000}), nullptr);
    EXPECT_NE(book.find(tablet, WallTime{2000}), nullptr);
}

TEST(DeviceBook, GivesEachDeviceACleanNameOfItsOwn) {
    DeviceBook book(services(), {});
    for (const std::string_view name : {"phone", "phone", "", " \t",
                                        "a\x1B[31m\xE2\x80\xAE"
                                        "b"})
        book.add(name, DeviceRights::use, WallTime{1});
    book.add(std::string(100, 'x'), DeviceRights::use, WallTime{1});
    std::vector<std::string> names;
    for (const Device& device : book.devices(WallTime{1}))
        names.push_back(device.name);
    EXPECT_THAT(names, testing::ElementsAre("phone", "phone 2", "phone 3", "phone 4", "a[31mb",
                                            std::string(40, 'x')));
    for (std::size_t i = 0; i < DeviceBook::maxDevices; ++i)
        book.add("new", DeviceRights::use, WallTime{1});
    EXPECT_EQ(book.devices(WallTime{1}).size(), DeviceBook::maxDevices);
    EXPECT_EQ(book.devices(WallTime{1}).front().name, "new");
}

} // namespace
} // namespace velmo
