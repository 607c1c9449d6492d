#include "app/core/file_preferences.hpp"

#include <fstream>
#include <nlohmann/json.hpp>
#include <system_error>

#include "os/replace_file.hpp"

namespace velmora {

namespace {

nlohmann::json readObject(const std::filesystem::path& file) {
    std::ifstream in(file);
    if (!in) return nlohmann::json::object();
    auto parsed = nlohmann::json::parse(in, nullptr, false);
    return parsed.is_object() ? parsed : nlohmann::json::object();
}

std::optional<std::string> writeAtomically(const std::filesystem::path& file,
                                           const std::string& contents) {
    std::error_code error;
    std::filesystem::create_directories(file.parent_path(), error);
    if (error) return "cannot create " + file.parent_path().string() + ": " + error.message();
    const auto name = file.filename().string();
    static_cast<void>(removeStrayTemporariesOf(file.parent_path(), {name}));
    if (const auto failed = replaceFile(file, contents, {.mode = 0644})) {
        return "cannot write " + file.string() + ": " +
               std::generic_category().message(failed->code);
    }
    return std::nullopt;
}

}  // namespace

std::optional<std::string> FilePreferences::text(std::string_view key) const {
    const auto object = readObject(file);
    const auto found = object.find(key);
    if (found == object.end() || !found->is_string()) return std::nullopt;
    return found->get<std::string>();
}

std::optional<std::string> FilePreferences::setText(std::string_view key,
                                                    const std::string& value) {
    auto object = readObject(file);
    object[std::string(key)] = value;
    return writeAtomically(file, object.dump(2) + "\n");
}

std::optional<std::string> MemoryPreferences::text(std::string_view key) const {
    const auto found = values_.find(key);
    if (found == values_.end()) return std::nullopt;
    return found->second;
}

std::optional<std::string> MemoryPreferences::setText(std::string_view key,
                                                      const std::string& value) {
    values_.insert_or_assign(std::string(key), value);
    return std::nullopt;
}

}  // namespace velmora
