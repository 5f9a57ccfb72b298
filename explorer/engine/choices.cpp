#include "choices.h"

#include <algorithm>

namespace explorer {

void Choices::Follow(const Decision* path, std::size_t depth) {
    Clear();
    depth_ = std::min(depth, MAX_DEPTH);
    std::copy(path, path + depth_, path_);
}

}  // namespace explorer
