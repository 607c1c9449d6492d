#include "app/linux/autostart.hpp"

#include <unistd.h>

#include <cerrno>
#include <sstream>
#include <system_error>

#include "app/core/appearance.hpp"
#include "os/replace_file.hpp"
#include "os/whole_file.hpp"
#include "policy/constants.hpp"

namespace velmora {

namespace {

// Autostart entries are small; anything larger is not one we could have written.
constexpr std::size_t entryReadCap = 64 * 1024;

bool hasLine(const std::string& text, std::string_view wanted) {
    std::istringstream lines(text);
    std::string line;
    while (std::getline(lines, line)) {
        while (!line.empty() && (line.back() == ' ' || line.back() == '\r'))
            line.pop_back();
        if (line == wanted) return true;
    }
    return false;
}

std::string errnoText(int error) {
    return std::generic_category().message(error);
}

std::optional<std::string> writeReplacing(const std::filesystem::path& file,
                                          const std::string& contents) {
    std::error_code error;
    std::filesystem::create_directories(file.parent_path(), error);
    if (error) return "cannot create " + file.parent_path().string() + ": " + error.message();
    const auto name = file.filename().string();
    static_cast<void>(removeStrayTemporariesOf(file.parent_path(), {name}));
    // The session reads the entry as the user; other programs may list it too.
    if (const auto failed = replaceFile(file, contents, {.mode = 0644})) {
        return "cannot write " + file.string() + ": " + errnoText(failed->code);
    }
    return std::nullopt;
}

}  // namespace

std::optional<std::filesystem::path> autostartEntryPath(const PlatformEnvironment& env) {
    std::filesystem::path base;
    if (env.xdgConfigHome && !env.xdgConfigHome->empty() &&
        std::filesystem::path(*env.xdgConfigHome).is_absolute()) {
        base = *env.xdgConfigHome;
    } else if (env.home && !env.home->empty()) {
        base = std::filesystem::path(*env.home) / ".config";
    } else {
        return std::nullopt;
    }
    return base / "autostart" / (std::string(bundleIdentifier) + ".desktop");
}

bool autostartEnabled(const std::filesystem::path& entry) {
    const auto text = readWholeFile(entry);
    if (!text || text->size() > entryReadCap) return false;
    return !hasLine(*text, "Hidden=true") && !hasLine(*text, "X-GNOME-Autostart-enabled=false");
}

std::string desktopExecArgument(std::string_view argument) {
    // Reserved characters force quoting; inside quotes ", `, $ and \ take a backslash. The
    // desktop file's own string escaping then doubles every backslash, and % is doubled for
    // the field codes.
    constexpr std::string_view reserved = " \t\n\"'\\><~|&;$*?#()`";
    const bool quote = argument.empty() || argument.find_first_of(reserved) != std::string::npos;
    std::string out = quote ? "\"" : "";
    for (const char c : argument) {
        if (quote && (c == '"' || c == '`' || c == '$' || c == '\\')) out += "\\\\";
        if (c == '%') out += '%';
        out += c == '\\' ? "\\\\" : std::string(1, c);
    }
    if (quote) out += '"';
    return out;
}

std::string autostartEntryText(const std::filesystem::path& executable) {
    return "[Desktop Entry]\n"
           "Type=Application\n"
           "Name=" +
           std::string(watchdog::appName) +
           "\n"
           "Comment=Watch how hot this computer is from login on\n"
           "Exec=" +
           desktopExecArgument(executable.string()) +
           "\n"
           "Icon=" +
           std::string(bundleIdentifier) +
           "\n"
           "Terminal=false\n"
           "X-GNOME-Autostart-enabled=true\n";
}

std::optional<std::string> enableAutostart(const std::filesystem::path& entry,
                                           const std::filesystem::path& executable) {
    return writeReplacing(entry, autostartEntryText(executable));
}

std::optional<std::string> disableAutostart(const std::filesystem::path& entry) {
    if (::unlink(entry.c_str()) == 0 || errno == ENOENT) return std::nullopt;
    return "cannot remove " + entry.string() + ": " + errnoText(errno);
}

}  // namespace velmora
