#include "tools/seed_weights.h"

#include <memory>
#include <new>

int seed_weights(const std::string& path) {
    const std::unique_ptr<Weights> record(new (std::nothrow) Weights{});
    if (!record) return 2;
    record->params = SEED_PARAMS;
    return write_weights(path, *record);
}
