#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <random>

#include "history/history_test_support.hpp"
#include "support/temp_dir.hpp"

namespace velmora {
namespace {

using testing::kHistoryStart;
using testing::kThisMachine;
using testing::patternSample;

/// The writer's side in a child process: continues the file's history one second per sample,
/// writes after every few samples and tells the parent after each write. Never returns.
[[noreturn]] void writeUntilKilled(const std::filesystem::path& dir, int tell) {
    auto opened = HistoryFile::open(dir, kThisMachine);
    if (!opened.file || !opened.notes.empty()) ::_exit(3);
    const auto rows = opened.store->rows();
    auto time = rows.empty() ? kHistoryStart : rows.back().time + 1;
    std::array<std::uint64_t, HistoryStore::tierCount> written{};
    for (std::size_t t = 0; t < HistoryStore::tierCount; ++t)
        written.at(t) = opened.store->tier(t).pushed();
    for (;;) {
        for (int i = 0; i < 7; ++i)
            opened.store->add(patternSample(time++), std::nullopt);
        if (opened.file->write(history_file::changedRecords(*opened.store, written), false)) {
            ::_exit(4);
        }
        const char done = 'w';
        if (::write(tell, &done, 1) != 1) ::_exit(5);
    }
}

/// Forks a writer, lets it finish `writes` writes, and kills it with SIGKILL.
void killWriterAfter(const std::filesystem::path& dir, int writes) {
    std::array<int, 2> pipe{};
    ASSERT_EQ(::pipe(pipe.data()), 0);
    const pid_t child = ::fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        ::close(pipe[0]);
        writeUntilKilled(dir, pipe[1]);
    }
    ::close(pipe[1]);
    char seen = 0;
    for (int i = 0; i < writes; ++i)
        ASSERT_EQ(::read(pipe[0], &seen, 1), 1) << "the writer stopped on its own";
    ::kill(child, SIGKILL);
    int status = 0;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    ::close(pipe[0]);
    ASSERT_TRUE(WIFSIGNALED(status)) << "the writer exited with " << WEXITSTATUS(status);
}

void expectConsistent(const std::vector<HistoryRow>& rows) {
    for (std::size_t i = 0; i < rows.size(); ++i) {
        const auto& row = rows[i];
        if (i > 0) {
            ASSERT_LT(rows[i - 1].time, row.time) << "row " << i;
        }
        const auto& hottest = row.figure(HistorySeries::hottest);
        ASSERT_TRUE(hottest.has_value()) << "row " << i;
        ASSERT_GE(hottest->min, 40.0);
        ASSERT_LE(hottest->max, 89.0);
        if (row.resolution == 1) {
            ASSERT_DOUBLE_EQ(hottest->mean, *patternSample(row.time).hottestC) << "row " << i;
        }
    }
}

TEST(HistoryKill, AWriterKilledAtAnyMomentNeverLeavesACorruptedHistory) {
    testing::TempDir tmp{"history-kill"};
    std::mt19937 random(20261125);
    std::uniform_int_distribution<int> writes(1, 40);
    std::int64_t lastNewest = 0;
    for (int round = 0; round < 40; ++round) {
        killWriterAfter(tmp.path(), writes(random));
        const auto reading = readHistory(tmp.path());
        ASSERT_TRUE(reading.store) << "round " << round << ": " << reading.problem;
        const auto rows = reading.store->rows();
        expectConsistent(rows);
        ASSERT_FALSE(rows.empty());
        ASSERT_GT(rows.back().time, lastNewest) << "round " << round << " lost earlier points";
        lastNewest = rows.back().time;
    }
    // Nothing was ever set aside: every killed writer left a file the next one could use.
    EXPECT_FALSE(std::filesystem::exists(tmp.path() / "history.bad"));
}

}  // namespace
}  // namespace velmora
