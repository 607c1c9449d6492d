#pragma once

#include <sys/resource.h>

#include <csignal>

namespace velmora::testing {

/// Lowers this process's file-size limit to zero bytes for its lifetime, so that every write
/// that would grow a file fails with EFBIG. Unlike permission bits this stops root too. The
/// signal the kernel sends for it is ignored meanwhile, as the watchdog itself ignores it.
class NoFileGrowth {
  public:
    NoFileGrowth() {
        previousHandler_ = std::signal(SIGXFSZ, SIG_IGN);
        ::getrlimit(RLIMIT_FSIZE, &previous_);
        rlimit none = previous_;
        none.rlim_cur = 0;
        ::setrlimit(RLIMIT_FSIZE, &none);
    }
    ~NoFileGrowth() {
        ::setrlimit(RLIMIT_FSIZE, &previous_);
        std::signal(SIGXFSZ, previousHandler_);
    }
    NoFileGrowth(const NoFileGrowth&) = delete;
    NoFileGrowth& operator=(const NoFileGrowth&) = delete;

  private:
    rlimit previous_{};
    void (*previousHandler_)(int) = nullptr;
};

}  // namespace velmora::testing
