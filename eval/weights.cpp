#include "eval/weights.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <memory>

#include "base/files.h"
#include "base/log.h"
#include "base/memory.h"
#include "eval/evaluation.h"

namespace {

// Used if the system has no large block to give, so that there is always storage; untouched it costs nothing.
Weights ordinary_storage;

// The block is never given back: threads may still evaluate while the program ends.
Weights& storage() {
    void* const block = allocate_large(sizeof(Weights)).release();
    return block ? *static_cast<Weights*>(block) : ordinary_storage;
}

using File = std::unique_ptr<FILE, int (*)(FILE*)>;

// A folder would open too.
File open_for_reading(const std::string& path) {
    return {can_read_file(path) ? std::fopen(path.c_str(), "rb") : nullptr, std::fclose};
}

}  // namespace

Weights& weights = storage();

int load_weights() { return load_weights_from(WEIGHTS_FILE); }

int load_weights_from(const std::string& path) {
    File file = open_for_reading(path);
    if (!file) {
        // One more try, whose outcome is not looked at.
        file = open_for_reading(path);
        log_printf("Cannot open %s for reading\n", path.c_str());
        return 1;
    }
    // A short file is a valid one whose missing weights are zero.
    [[maybe_unused]] const size_t got = std::fread(&weights, 1, WEIGHTS_BYTES, file.get());
    init_eval_tables();
    return 0;
}

void set_weights(std::span<const uint8_t> image) {
    clear_weights();
    if (!image.empty()) std::memcpy(&weights, image.data(), std::min(image.size(), WEIGHTS_BYTES));
    init_eval_tables();
}

void clear_weights() { std::memset(&weights, 0, WEIGHTS_BYTES); }

int write_weights(const std::string& path, const Weights& record) {
    return replace_file(path, &record, WEIGHTS_BYTES);
}
