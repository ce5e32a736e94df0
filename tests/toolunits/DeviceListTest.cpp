// The options --device, --devices and --jobs: which devices they name.
#include <gtest/gtest.h>

#include <sched.h>

#include "DeviceBatches.h"
#include "support/TemporaryDirectory.h"

namespace {

using toolunits::BatchCall;
using Devices = std::vector<std::string>;

class DeviceList : public testing::Test {
  protected:
    Devices devicesIn(std::string_view text) const {
        return BatchCall({"--devices", folder_.write("list", text)}).options().devices();
    }
    std::string messageOf(std::vector<std::string> const& words) const {
        try {
            BatchCall const call(words);
            call.options().devices();
        } catch (std::runtime_error const& error) {
            return error.what();
        }
        return "no message";
    }

    support::TemporaryDirectory folder_;
};

struct List {
    std::string text;
    Devices devices;
};

TEST_F(DeviceList, HasADeviceInEachLine) {
    using namespace std::string_literals;
    for (auto const& [text, devices] : std::vector<List>{{"a\nb\n", {"a", "b"}},
                                                         {"a\nb", {"a", "b"}},
                                                         {"a\r\nb\r\n\r\n", {"a", "b"}},
                                                         {"\n\n# all of them\na\n#b\n\n", {"a"}},
                                                         {" a b \n\t#c\n", {" a b ", "\t#c"}},
                                                         {"a # b\na\na\n", {"a # b", "a", "a"}},
                                                         {"\xff\x1b\n", {"\xff\x1b"}},
                                                         {"a\rb\n", {"a\rb"}}})
        EXPECT_EQ(devicesIn(text), devices) << text;
}

TEST_F(DeviceList, MayBeLong) {
    std::string text;
    for (int i = 0; i < 100000; ++i)
        text += "images/" + std::to_string(i) + "\n";
    auto const devices = devicesIn(text);
    EXPECT_EQ(devices.size(), 100000U);
    EXPECT_EQ(devices.back(), "images/99999");
}

TEST_F(DeviceList, ComesBehindTheDevicesOfOptions) {
    auto const list = folder_.write("list", "c\n");
    EXPECT_EQ(BatchCall({"--devices", list, "--device", "b", "--device", "a"}).options().devices(),
              (Devices{"b", "a", "c"}));
    folder_.write("list", "");
    EXPECT_EQ(BatchCall({"--devices", list, "--device", "b"}).options().devices(), Devices{"b"});
}

TEST_F(DeviceList, ThatCannotBeUsedIsToldOf) {
    auto const list = (folder_ / "list").string();
    EXPECT_EQ(messageOf({"--devices", list}),
              "cannot read " + list + ": No such file or directory");
    EXPECT_EQ(messageOf({"--devices", folder_.string()}),
              "cannot read " + folder_.string() + ": Is a directory");
    folder_.write("list", "# none\n\n");
    EXPECT_EQ(messageOf({"--devices", list}), list + " names no device");
    folder_.write("list", std::string_view("a\nb\0c\n", 6));
    EXPECT_EQ(messageOf({"--devices", list}), list + " is no list of devices: it holds a NUL byte");
    EXPECT_EQ(messageOf({"--devices", "\x1b"}), "cannot read \\x1b: No such file or directory");
}

TEST_F(DeviceList, HasOneDeviceForEachOption) {
    EXPECT_EQ(BatchCall({"--device", "a", "--device=b"}).options().devices(), (Devices{"a", "b"}));
    EXPECT_THROW(BatchCall({"--device", "a", "b"}), CLI::ExtrasError);
    EXPECT_THROW(BatchCall({"--device", ""}), CLI::ValidationError);
    EXPECT_THROW(BatchCall({"--jobs", "2"}), CLI::RequiresError);
}

TEST_F(DeviceList, IsGivenByEitherOption) {
    EXPECT_FALSE(BatchCall({}).options().isGiven());
    EXPECT_TRUE(BatchCall({"--device", "a"}).options().isGiven());
    EXPECT_TRUE(BatchCall({"--devices", "-"}).options().isGiven());
}

TEST_F(DeviceList, HasAJobForEachCoreThatMayBeUsed) {
    EXPECT_EQ(BatchCall({"--device", "a", "--jobs", "3"}).options().jobs(), 3U);
    cpu_set_t all;
    ASSERT_EQ(sched_getaffinity(0, sizeof all, &all), 0);
    EXPECT_EQ(BatchCall({"--device", "a"}).options().jobs(), CPU_COUNT(&all));
    cpu_set_t one;
    CPU_ZERO(&one);
    int first = 0;
    while (!CPU_ISSET(first, &all))
        ++first;
    CPU_SET(first, &one);
    ASSERT_EQ(sched_setaffinity(0, sizeof one, &one), 0);
    EXPECT_EQ(BatchCall({"--device", "a"}).options().jobs(), 1U);
    sched_setaffinity(0, sizeof all, &all);
}

} // namespace
