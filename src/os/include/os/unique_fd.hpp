#pragma once

#include <utility>

namespace velmora {

/// Owns one POSIX file descriptor and closes it when it goes out of scope.
class UniqueFd {
  public:
    UniqueFd() = default;
    explicit UniqueFd(int fd) : fd_(fd) {}
    ~UniqueFd() { reset(); }

    UniqueFd(const UniqueFd&) = delete;
    UniqueFd& operator=(const UniqueFd&) = delete;
    UniqueFd(UniqueFd&& other) noexcept : fd_(std::exchange(other.fd_, -1)) {}
    UniqueFd& operator=(UniqueFd&& other) noexcept {
        if (this != &other) {
            reset();
            fd_ = std::exchange(other.fd_, -1);
        }
        return *this;
    }

    [[nodiscard]] int get() const { return fd_; }
    [[nodiscard]] bool valid() const { return fd_ >= 0; }

    /// Closes now and reports close's own result (0, or -1 with errno set); 0 when empty.
    int close();
    /// Closes now, ignoring any failure.
    void reset() { static_cast<void>(close()); }

  private:
    int fd_ = -1;
};

}  // namespace velmora
