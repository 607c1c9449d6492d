#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>

#include "os/unique_fd.hpp"

namespace velmora {

/// A kernel attribute file opened once and re-read from offset 0 with one `pread` per call.
class SysfsFile {
  public:
    static std::optional<SysfsFile> open(const std::string& path);
    /// Opens the file only when it reads now: firmware that cannot tell a figure often fails
    /// its read, and such a file must not trigger a rediscovery every second.
    static std::optional<SysfsFile> openReadable(const std::string& path);

    /// The file's text, at most the buffer's size; nothing when the read fails or is empty
    /// (an unplugged device's attributes read as errors or as nothing).
    std::optional<std::string_view> read(std::span<char> buffer) const;
    /// A whole-number attribute ("42000\n").
    std::optional<long long> readInteger() const;
    /// A one-line text attribute, without its trailing newline.
    std::optional<std::string> readLine() const;

    const std::string& path() const { return path_; }
    /// Whether the path still names the open file (not removed, not replaced by another).
    bool stillAtPath() const;

  private:
    SysfsFile(UniqueFd fd, std::string path) : fd_(std::move(fd)), path_(std::move(path)) {}

    UniqueFd fd_;
    std::string path_;
};

/// A small file's text read once (discovery only); nothing when it cannot be read.
std::optional<std::string> readSmallFile(const std::string& path);

/// The integer in an attribute's text, allowing surrounding blanks and the trailing newline.
std::optional<long long> parseInteger(std::string_view text);

/// The text without leading and trailing white space.
std::string_view trimmed(std::string_view text);

}  // namespace velmora
