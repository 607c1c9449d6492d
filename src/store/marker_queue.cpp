#include "store/marker_queue.hpp"

namespace velmora {

std::shared_future<WriteError> MarkerQueue::write(const Marker& marker) {
    return worker_.submit([store = store_, marker] { return store.write(marker); });
}

void MarkerQueue::clear() {
    worker_.post([store = store_] { store.clear(); });
}

}  // namespace velmora
