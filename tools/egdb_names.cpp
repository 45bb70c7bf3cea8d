#include "tools/egdb_names.h"

#include <algorithm>
#include <array>

#include "tools/egdb_values.h"

std::vector<EgdbFileName> egdb_names_of(EgdbType type, int pieces) {
    EgdbFileList list;
    make_file_list(type, pieces, -1, list);
    std::vector<EgdbFileName> names;
    for (int i = 0; i < list.count; ++i)
        if (list.names[static_cast<size_t>(i)].pieces == pieces)
            names.push_back(list.names[static_cast<size_t>(i)]);
    return names;
}

std::vector<Material> materials_of(const EgdbFileName& name) {
    const char* const digits = name.text.data() + 4;
    if (name.text[3] == '-') return {{digits[0] - '0', digits[1] - '0', digits[2] - '0', digits[3] - '0'}};
    std::vector<Material> materials = solving_order(name.pieces);
    const auto key = [](const Material& m) { return std::array{black_count(m), m.bk, m.wk}; };
    std::sort(materials.begin(), materials.end(),
              [&](const Material& a, const Material& b) { return key(a) < key(b); });
    return materials;
}
