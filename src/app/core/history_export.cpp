#include "app/core/history_export.hpp"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

#include "os/unique_fd.hpp"
#include "os/whole_file.hpp"
#include "store/history_csv.hpp"
#include "store/history_file.hpp"

namespace velmora {

namespace {

std::optional<std::string> failure(const std::string& what, int err) {
    return what + ": " + std::generic_category().message(err);
}

}  // namespace

std::optional<std::string> exportHistory(const std::filesystem::path& dataDir,
                                         const std::string& target) {
    const auto reading = readHistory(dataDir);
    if (!reading.store) return "cannot export the history: " + reading.problem;
    const auto text = historyCsv(reading.store->rows());
    if (target == "-") {
        if (const int err = writeAll(STDOUT_FILENO, text)) {
            return failure("could not write the history to standard output", err);
        }
        return std::nullopt;
    }
    UniqueFd fd(::open(target.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644));
    if (!fd.valid()) return failure("could not open " + target, errno);
    if (const int err = writeAll(fd.get(), text)) return failure("could not write " + target, err);
    if (fd.close() != 0) return failure("could not write " + target, errno);
    return std::nullopt;
}

}  // namespace velmora
