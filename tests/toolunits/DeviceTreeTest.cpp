// Where the files of a device are in its folder.
#include <gtest/gtest.h>

#include "LoadOptions.h"
#include "devices/DeviceTree.h"
#include "support/TemporaryDirectory.h"

namespace {

using KeldaTool::foldersOf;

class DeviceTree : public testing::Test {
  protected:
    std::string messageOf(std::string const& device) const {
        try {
            foldersOf(device);
        } catch (std::runtime_error const& error) {
            return error.what();
        }
        return "no message";
    }

    support::TemporaryDirectory folder_;
    std::string const device_ = folder_.string();
    std::string const preinitBelow_ = KeldaTool::defaultPreinitDir;
    std::string const profilesBelow_ = KeldaTool::defaultProfileDir;
};

TEST_F(DeviceTree, HasItsFilesInPreinitAndProfiles) {
    folder_.makeDirectory("preinit");
    folder_.makeDirectory("profiles");
    EXPECT_EQ(foldersOf(device_).preinitDir, device_ + "/preinit");
    EXPECT_EQ(foldersOf(device_).profileDir, device_ + "/profiles");
}

TEST_F(DeviceTree, OrInTheDefaultFoldersBelow) {
    folder_.makeDirectory(preinitBelow_.substr(1));
    EXPECT_EQ(foldersOf(device_).preinitDir, device_ + preinitBelow_);
    EXPECT_EQ(foldersOf(device_).profileDir, device_ + profilesBelow_);
}

TEST_F(DeviceTree, TakesItsOwnFoldersBeforeThoseOfAnImage) {
    folder_.makeDirectory(preinitBelow_.substr(1));
    folder_.makeDirectory("profiles"); // one is enough: the other's absence is then told
    EXPECT_EQ(foldersOf(device_).preinitDir, device_ + "/preinit");
}

TEST_F(DeviceTree, DoesNotMindSlashesAtTheEnd) {
    folder_.makeDirectory("preinit");
    EXPECT_EQ(foldersOf(device_ + "//").preinitDir, device_ + "/preinit");
}

TEST_F(DeviceTree, ThatIsNoneIsToldOf) {
    folder_.write("preinit", "a file");
    EXPECT_EQ(messageOf(device_), device_ + " is no device: it has neither preinit and profiles "
                                            "nor usr/lib64/preinit and "
                                            "usr/lib64/KeldaMountProfiles");
    EXPECT_EQ(messageOf("nowhere"), "Cannot open directory nowhere");
    EXPECT_EQ(messageOf(folder_.write("file", "")),
              "Cannot open directory " + (folder_ / "file").string());
}

} // namespace
