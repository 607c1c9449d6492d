#include "store/store_error.hpp"

#include <system_error>

namespace velmora {

StoreError StoreError::fromErrno(std::string_view action, const std::filesystem::path& path,
                                 int err) {
    std::string message(action);
    message += ' ';
    message += path.string();
    message += ": ";
    message += std::generic_category().message(err);
    return StoreError{err, std::move(message)};
}

}  // namespace velmora
