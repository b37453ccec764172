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
    RaisedDevicesRecord record(files, path, nullptr);
    EXPECT_TRUE(record.isEmpty());
    EXPECT_TRUE(record.save());
    record.devices["acc.speakers"] = {{{0.5F, 0.25F}, true}, true};
    record.origin = {"acc.speakers", "acc.away"};
    EXPECT_TRUE(record.save());
    EXPECT_EQ(halvo::test::mode(path), 0600U);

    RaisedDevicesRecord read(files, path, nullptr);
    EXPECT_EQ(read.devices, record.devices);
    EXPECT_EQ(read.origin, record.origin);
    read.devices.clear();
    read.origin.reset();
    EXPECT_TRUE(read.save());
    EXPECT_FALSE(std::filesystem::exists(path));
}

} // namespace
