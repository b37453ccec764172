#include "linux/files/XdgFileSystem.h"
#include "loudness/RaisedDevicesRecord.h"
#include "unit/linux/TemporaryDirectory.h"

#include <gtest/gtest.h>

namespace {

using halvo::RaisedDevicesRecord;
using halvo::XdgFileSystem;
using halvo::test::TemporaryDirectory;

TEST(RaisedDevicesOnDisk, ArePrivateAndGoneOnceNothingIsRaised) {
    const TemporaryDirectory directory;
    const auto path = directory / "halvo/raised-devices.json"; // nor is there a folder yet
    XdgFileSystem files;
    RaisedDevicesRecord record(files, {path, directory / "spare.json"}, nullptr);
    EXPECT_TRUE(record.isEmpty());
    EXPECT_TRUE(record.save());
    record.devices["acc.speakers"] = {{{0.5F, 0.25F}, true}, true};
    record.origin = {"acc.speakers", "acc.away"};
    EXPECT_TRUE(record.save());
    EXPECT_EQ(halvo::test::mode(path), 0600U);

    RaisedDevicesRecord read(files, {path, directory / "spare.json"}, nullptr);
    EXPECT_EQ(read.devices, record.devices);
    EXPECT_EQ(read.origin, record.origin);
    read.devices.clear();
    read.origin.reset();
    EXPECT_TRUE(read.save());
    EXPECT_FALSE(std::filesystem::exists(path));
}

TEST(RaisedDevicesOnDisk, LieInTheSparePlaceWhileTheUsualOneTakesNothing) {
    const TemporaryDirectory directory;
    const RaisedDevicesRecord::Places places{directory / "halvo/raised-devices.json",
                                             directory / "spare.json"};
    XdgFileSystem files;
    ASSERT_TRUE(files.write(directory / "halvo", "where the folder should be"));
    RaisedDevicesRecord record(files, places, nullptr);
    record.devices["acc.speakers"] = {{{0.5F, 0.25F}, false}, true};
    EXPECT_TRUE(record.save());
    RaisedDevicesRecord next(files, places, nullptr);
    EXPECT_EQ(next.devices, record.devices);

    std::filesystem::remove(directory / "halvo"); // there is room again
    next.devices["acc.speakers"].isMoved = false;
    EXPECT_TRUE(next.save());
    EXPECT_FALSE(std::filesystem::exists(places.spare));
    EXPECT_EQ(RaisedDevicesRecord(files, places, nullptr).devices, next.devices);

    RaisedDevicesRecord nowhere(files, {directory / "a/b/c", {}}, nullptr);
    ASSERT_TRUE(files.write(directory / "a", "in the way"));
    nowhere.devices = next.devices;
    EXPECT_FALSE(nowhere.save());
}

} // namespace
