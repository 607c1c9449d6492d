#include "store/marker_queue.hpp"

#include <gtest/gtest.h>

#include "store/temp_dir.hpp"

namespace velmora::testing {
namespace {

const Marker kMarker{"2027-01-15T08:00:10Z", 108, "emergency countdown reached 0"};

TEST(MarkerQueue, WriteReportsItsResultThroughTheFuture) {
    TempDir dir;
    MarkerQueue queue{MarkerStore(dir.path())};
    auto written = queue.write(kMarker);
    EXPECT_FALSE(written.get().has_value());
    EXPECT_EQ(MarkerStore(dir.path()).read(), kMarker);
}

TEST(MarkerQueue, ClearAskedAfterAWriteComesAfterIt) {
    TempDir dir;
    MarkerQueue queue{MarkerStore(dir.path())};
    for (int round = 0; round < 20; ++round) {
        static_cast<void>(queue.write(kMarker));
        queue.clear();
    }
    queue.settle();
    EXPECT_FALSE(std::filesystem::exists(dir / "auto-shutdown.marker"));
}

TEST(MarkerQueue, FailedWriteComesBackAsAnError) {
    TempDir dir;
    writeText(dir / "blocker", "a file where the folder should be");
    MarkerQueue queue{MarkerStore(dir / "blocker" / "data")};
    const auto error = queue.write(kMarker).get();
    ASSERT_TRUE(error.has_value());
    EXPECT_NE(error->message.find("blocker"), std::string::npos) << error->message;
}

}  // namespace
}  // namespace velmora::testing
