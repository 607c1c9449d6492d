#include "metrics/linux/sysfs_file.hpp"

#include "metrics/read_watch.hpp"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <charconv>
#include <utility>

namespace velmora {

std::optional<SysfsFile> SysfsFile::open(const std::string& path) {
    if (readQuarantined(path)) return std::nullopt;
    const ReadWatch::Scope watched(path);
    UniqueFd fd(::open(path.c_str(), O_RDONLY | O_CLOEXEC));
    if (!fd.valid()) return std::nullopt;
    return SysfsFile(std::move(fd), path);
}

std::optional<SysfsFile> SysfsFile::openReadable(const std::string& path) {
    auto file = open(path);
    std::array<char, 64> probe{};
    // A second try, so that one failed read at discovery does not lose the file for good.
    if (!file || (!file->read(probe) && !file->read(probe))) return std::nullopt;
    return file;
}

bool SysfsFile::stillAtPath() const {
    struct stat open {};
    struct stat named {};
    if (!fd_.valid() || ::fstat(fd_.get(), &open) != 0 || ::stat(path_.c_str(), &named) != 0)
        return false;
    return open.st_dev == named.st_dev && open.st_ino == named.st_ino;
}

std::optional<std::string_view> SysfsFile::read(std::span<char> buffer) const {
    const ReadWatch::Scope watched(path_);
    ssize_t got = -1;
    do {
        got = ::pread(fd_.get(), buffer.data(), buffer.size(), 0);
    } while (got < 0 && errno == EINTR);
    if (got <= 0) return std::nullopt;
    return std::string_view(buffer.data(), static_cast<std::size_t>(got));
}

std::optional<long long> SysfsFile::readInteger() const {
    std::array<char, 32> buffer{};
    const auto text = read(buffer);
    return text ? parseInteger(*text) : std::nullopt;
}

std::optional<std::string> SysfsFile::readLine() const {
    std::array<char, 256> buffer{};
    const auto text = read(buffer);
    if (!text) return std::nullopt;
    return std::string(trimmed(text->substr(0, text->find('\n'))));
}

std::optional<std::string> readSmallFile(const std::string& path) {
    const auto file = SysfsFile::open(path);
    if (!file) return std::nullopt;
    std::array<char, 4096> buffer{};
    auto text = file->read(buffer);
    if (!text) text = file->read(buffer);  // one failed read must not lose a limit for good
    if (!text) return std::nullopt;
    return std::string(*text);
}

std::string_view trimmed(std::string_view text) {
    constexpr std::string_view blanks = " \t\r\n";
    const auto first = text.find_first_not_of(blanks);
    if (first == std::string_view::npos) return {};
    const auto last = text.find_last_not_of(blanks);
    return text.substr(first, last - first + 1);
}

std::optional<long long> parseInteger(std::string_view text) {
    const std::string_view digits = trimmed(text);
    if (digits.empty()) return std::nullopt;
    long long value = 0;
    const auto* end = digits.data() + digits.size();
    const auto [ptr, ec] = std::from_chars(digits.data(), end, value);
    if (ec != std::errc() || ptr != end) return std::nullopt;
    return value;
}

}  // namespace velmora
