#pragma once

#include <cstdint>
#include <string>

#include "fixture_tree.hpp"

namespace velmora::testing {

/// One process as /proc/PID/stat prints it.
struct FakeProcess {
    int pid = 0;
    std::string name;
    char state = 'S';
    int ppid = 1;
    std::uint64_t flags = 0x400000;
    std::uint64_t utime = 0;
    std::uint64_t stime = 0;
    std::uint64_t cutime = 0;
    std::uint64_t cstime = 0;
    std::uint64_t starttime = 0;
};

/// The stat line the kernel would print for `p` (fields it leaves at zero for us are zero).
inline std::string statLine(const FakeProcess& p) {
    auto n = [](auto value) { return std::to_string(value); };
    return n(p.pid) + " (" + p.name + ") " + std::string(1, p.state) + " " + n(p.ppid) +
           " 1 1 0 -1 " + n(p.flags) + " 0 0 0 0 " + n(p.utime) + " " + n(p.stime) + " " +
           n(p.cutime) + " " + n(p.cstime) + " 20 0 1 0 " + n(p.starttime) +
           " 1000 100 18446744073709551615 1 1 0 0 0 0 0 0 0 0 0 0 0 17 1 0 0 0 0 0\n";
}

/// A /proc tree written by the test: processes and the uptime their ages are read against.
class ProcTree {
  public:
    ProcTree() : tree_("") {}

    std::string root() const { return tree_.root(); }
    const FixtureTree& tree() const { return tree_; }

    void put(const FakeProcess& p) const {
        tree_.write("proc/" + std::to_string(p.pid) + "/stat", statLine(p));
    }
    void putText(int pid, const std::string& text) const {
        tree_.write("proc/" + std::to_string(pid) + "/stat", text);
    }
    void remove(int pid) const {
        std::filesystem::remove_all(tree_.path("proc/" + std::to_string(pid)));
    }
    void uptime(double seconds) const {
        tree_.write("proc/uptime", std::to_string(seconds) + " 1000.00\n");
    }

  private:
    FixtureTree tree_;
};

}  // namespace velmora::testing
