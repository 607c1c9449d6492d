#include "app/core/instance_lock.hpp"

#include <gtest/gtest.h>

#include <unistd.h>

#include <fstream>
#include <iterator>

#include "store/temp_dir.hpp"

namespace velmora::testing {
namespace {

std::string lockFileText(const TempDir& dir) {
    std::ifstream in(dir / InstanceLock::fileName);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

TEST(InstanceLock, FirstInstanceHoldsTheLockAndWritesItsProcessId) {
    TempDir dir;
    const auto first = InstanceLock::acquire(dir.path());
    EXPECT_TRUE(std::holds_alternative<InstanceLock>(first));
    EXPECT_EQ(lockFileText(dir), std::to_string(::getpid()) + "\n");
}

TEST(InstanceLock, SecondInstanceIsToldWhoHoldsItAndChangesNothing) {
    TempDir dir;
    const auto first = InstanceLock::acquire(dir.path());
    ASSERT_TRUE(std::holds_alternative<InstanceLock>(first));
    writeText(dir / "auto-shutdown.marker", "{}");
    const auto entriesBefore = entriesOf(dir.path());
    const auto second = InstanceLock::acquire(dir.path());
    const auto* held = std::get_if<InstanceLock::Held>(&second);
    ASSERT_NE(held, nullptr);
    EXPECT_EQ(held->holder, ::getpid());
    EXPECT_EQ(entriesOf(dir.path()), entriesBefore);
    EXPECT_EQ(lockFileText(dir), std::to_string(::getpid()) + "\n");
}

TEST(InstanceLock, LockIsFreeOnceTheHolderIsGone) {
    TempDir dir;
    {
        const auto first = InstanceLock::acquire(dir.path());
        ASSERT_TRUE(std::holds_alternative<InstanceLock>(first));
    }
    EXPECT_TRUE(std::holds_alternative<InstanceLock>(InstanceLock::acquire(dir.path())));
}

TEST(InstanceLock, HolderThatWroteNoIdIsStillAHolder) {
    TempDir dir;
    const auto first = InstanceLock::acquire(dir.path());
    ASSERT_TRUE(std::holds_alternative<InstanceLock>(first));
    writeText(dir / InstanceLock::fileName, "");
    const auto second = InstanceLock::acquire(dir.path());
    const auto* held = std::get_if<InstanceLock::Held>(&second);
    ASSERT_NE(held, nullptr);
    EXPECT_FALSE(held->holder.has_value());
}

TEST(InstanceLock, DataDirectoryThatCannotExistIsUnavailableNotFatal) {
    TempDir dir;
    writeText(dir / "blocker", "a file where the folder should be");
    const auto outcome = InstanceLock::acquire(dir / "blocker" / "data");
    const auto* unavailable = std::get_if<InstanceLock::Unavailable>(&outcome);
    ASSERT_NE(unavailable, nullptr);
    EXPECT_NE(unavailable->reason.find("instance.lock"), std::string::npos) << unavailable->reason;
}

}  // namespace
}  // namespace velmora::testing
