#include "metrics/linux/sysfs_dir.hpp"

#include <algorithm>
#include <charconv>
#include <filesystem>
#include <system_error>

namespace velmora {

namespace {

// Splits "hwmon10" into ("hwmon", 10) so that numbered names sort by their number.
std::pair<std::string_view, long> naturalKey(std::string_view name) {
    std::size_t digits = name.size();
    while (digits > 0 && name[digits - 1] >= '0' && name[digits - 1] <= '9')
        --digits;
    long number = -1;
    std::from_chars(name.data() + digits, name.data() + name.size(), number);
    return {name.substr(0, digits), number};
}

}  // namespace

std::string childPath(std::string_view dir, std::string_view name) {
    std::string path;
    path.reserve(dir.size() + 1 + name.size());
    path.append(dir).append("/").append(name);
    return path;
}

std::vector<std::string> listEntries(const std::string& dir, std::string_view prefix) {
    std::vector<std::string> names;
    std::error_code error;
    for (std::filesystem::directory_iterator it(dir, error), end; !error && it != end;
         it.increment(error)) {
        std::string name = it->path().filename().string();
        if (name.starts_with(prefix)) names.push_back(std::move(name));
    }
    std::sort(names.begin(), names.end(), [](const std::string& a, const std::string& b) {
        return naturalKey(a) < naturalKey(b) || (naturalKey(a) == naturalKey(b) && a < b);
    });
    return names;
}

std::vector<int> numberedFiles(const std::string& dir, std::string_view stem,
                               std::string_view suffix) {
    std::vector<int> numbers;
    for (const std::string& name : listEntries(dir, stem)) {
        if (!name.ends_with(suffix) || name.size() <= stem.size() + suffix.size()) continue;
        const std::string_view middle(name.data() + stem.size(),
                                      name.size() - stem.size() - suffix.size());
        int number = 0;
        const auto [ptr, ec] =
            std::from_chars(middle.data(), middle.data() + middle.size(), number);
        if (ec == std::errc() && ptr == middle.data() + middle.size()) numbers.push_back(number);
    }
    std::sort(numbers.begin(), numbers.end());
    return numbers;
}

}  // namespace velmora
