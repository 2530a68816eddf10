#include "engine/controller_map.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "platform/files.h"

namespace vantoric {
namespace {

class ControllerMapFile : public ::testing::Test {
protected:
    ControllerMapFile() : path(::testing::TempDir() + ::testing::UnitTest::GetInstance()->current_test_info()->name() + ".cfg") {}
    ~ControllerMapFile() override { std::filesystem::remove(path); }
    void put(const std::vector<std::uint8_t>& bytes) { ASSERT_TRUE(platform::writeFile(path, bytes.data(), bytes.size())); }
    std::string path;
    ControllerMap map;
};

void expectEmpty(const ControllerMap& map, int from = 0) {
    for (int controller = from; controller < 128; ++controller) EXPECT_EQ(map.get(controller), ControllerMap::none) << controller;
}

TEST_F(ControllerMapFile, StartsWithoutAssignments) { expectEmpty(map); }

TEST_F(ControllerMapFile, KeepsEveryAssignment) {
    for (int controller = 0; controller < 128; ++controller) map.set(controller, controller * 9);
    ASSERT_TRUE(map.save(path));
    EXPECT_EQ(std::filesystem::file_size(path), 258u);
    ControllerMap other;
    other.load(path);
    for (int controller = 0; controller < 128; ++controller) EXPECT_EQ(other.get(controller), controller * 9);
}

TEST_F(ControllerMapFile, HighByteComesFirstAndEmptyIsFf) {
    map.set(1, 0x0123);
    const auto bytes = map.encode();
    EXPECT_EQ(bytes[0], 0xff);
    EXPECT_EQ(bytes[1], 0xff);
    EXPECT_EQ(bytes[2], 0x01);
    EXPECT_EQ(bytes[3], 0x23);
    EXPECT_EQ(bytes[256], 0);
    EXPECT_EQ(bytes[257], 0);
}

TEST_F(ControllerMapFile, MissingFileGivesAnEmptyMap) {
    map.set(7, 97);
    map.load(path + ".missing");
    expectEmpty(map);
}

TEST_F(ControllerMapFile, ShortFileLeavesTheRestEmpty) {
    put({0x00, 0x61, 0x00, 0x62, 0x00});
    for (int controller = 0; controller < 128; ++controller) map.set(controller, 5);
    map.load(path);
    EXPECT_EQ(map.get(0), 0x61);
    EXPECT_EQ(map.get(1), 0x62);
    expectEmpty(map, 2);
}

TEST_F(ControllerMapFile, LongFileIsReadToItsLastEntry) {
    put(std::vector<std::uint8_t>(10000, 0x01));
    map.load(path);
    EXPECT_EQ(map.get(0), 0x0101);
    EXPECT_EQ(map.get(127), 0x0101);
}

TEST_F(ControllerMapFile, UnwritablePlaceIsNotSaved) { EXPECT_FALSE(map.save(path + ".missing/folder.cfg")); }

TEST_F(ControllerMapFile, TwoInstancesKeepEachOthersChanges) {
    map.set(0, 10);
    map.set(1, 11);
    map.set(2, 22);
    ASSERT_TRUE(map.save(path));
    ControllerMap first, second;
    first.load(path);
    second.load(path);
    first.set(0, 100);
    first.set(3, 33);
    first.set(2, ControllerMap::none);
    second.set(4, 44);
    ASSERT_TRUE(first.save(path));
    ASSERT_TRUE(second.save(path));
    map.load(path);
    EXPECT_EQ(map.get(0), 100);
    EXPECT_EQ(map.get(1), 11);
    EXPECT_EQ(map.get(2), ControllerMap::none) << "what one removed does not come back with the other";
    EXPECT_EQ(map.get(3), 33);
    EXPECT_EQ(map.get(4), 44);
    EXPECT_EQ(first.get(4), ControllerMap::none) << "and nothing changes under a player's hands";
}

TEST_F(ControllerMapFile, AnInstanceThatChangedNothingChangesNothing) {
    ControllerMap idle;
    idle.load(path);
    map.set(9, 99);
    ASSERT_TRUE(map.save(path));
    ASSERT_TRUE(idle.save(path));
    map.load(path);
    EXPECT_EQ(map.get(9), 99);
}

TEST_F(ControllerMapFile, TheLastOfTwoChangesOfAnEntryCounts) {
    ControllerMap first, second;
    first.set(5, 1);
    ASSERT_TRUE(first.save(path)) << "right after the learn";
    second.load(path);
    second.set(5, 2);
    ASSERT_TRUE(second.save(path));
    ASSERT_TRUE(first.save(path)) << "and at its end";
    map.load(path);
    EXPECT_EQ(map.get(5), 2);
}

TEST_F(ControllerMapFile, ClearingChangesAllEntries) {
    map.set(9, 99);
    ASSERT_TRUE(map.save(path));
    ControllerMap other;
    other.clear();
    ASSERT_TRUE(other.save(path));
    map.load(path);
    expectEmpty(map);
}

TEST_F(ControllerMapFile, ChangesAreKnownUntilTheyAreSaved) {
    map.load(path);
    EXPECT_FALSE(map.isChanged());
    EXPECT_TRUE(map.saveChanges(path));
    EXPECT_FALSE(platform::exists(path)) << "there was nothing to save";
    map.set(7, 97);
    EXPECT_TRUE(map.isChanged());
    EXPECT_FALSE(map.saveChanges(path + ".missing/folder.cfg"));
    EXPECT_TRUE(map.isChanged()) << "they still are not saved";
    EXPECT_TRUE(map.saveChanges(path));
    EXPECT_FALSE(map.isChanged());
    ControllerMap other;
    other.load(path);
    EXPECT_EQ(other.get(7), 97);
}

TEST_F(ControllerMapFile, WithoutAFileTheWholeMapIsWritten) {
    put(std::vector<std::uint8_t>(258, 1));
    map.load(path);
    std::filesystem::remove(path);
    ASSERT_TRUE(map.save(path));
    ControllerMap other;
    other.load(path);
    EXPECT_EQ(other.get(100), 0x0101);
}

TEST_F(ControllerMapFile, WhatCannotBeReadIsLeftAlone) {
    std::filesystem::create_directory(path);
    map.set(7, 97);
    EXPECT_FALSE(map.save(path));
    EXPECT_TRUE(map.isChanged());
    EXPECT_TRUE(platform::isFolder(path));
}

TEST_F(ControllerMapFile, AShorterOrLongerFileIsWrittenInFull) {
    put({0x00, 0x61});
    map.load(path);
    ASSERT_TRUE(map.save(path));
    EXPECT_EQ(std::filesystem::file_size(path), 258u);
    EXPECT_EQ(map.get(0), 0x61);
}

TEST_F(ControllerMapFile, OnlyWhatTheFileCanHoldIsStored) {
    map.set(3, -1);
    map.set(4, 70000);
    EXPECT_EQ(map.get(3), ControllerMap::none);
    EXPECT_EQ(map.get(4), ControllerMap::none);
}

}  // namespace
}  // namespace vantoric
