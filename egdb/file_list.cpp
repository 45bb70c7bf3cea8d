#include "egdb/file_list.h"

#include <algorithm>
#include <cstdio>

#include "egdb/numbering.h"

namespace {

void add_name(EgdbFileList& list, const char* text, int pieces, int max_one_side) {
    if (list.count >= MAX_EGDB_FILES) return;
    EgdbFileName& name = list.names[static_cast<size_t>(list.count++)];
    std::snprintf(name.text.data(), name.text.size(), "%s", text);
    name.pieces = pieces;
    name.max_one_side = max_one_side;
}

constexpr char digit(int number) { return static_cast<char>('0' + number); }

// The materials of that many pieces on each side, black having as many as white or more.
void add_materials(EgdbFileList& list, int black, int white, int most_kings) {
    for (int bk = 0; bk <= black; ++bk) {
        for (int wk = 0; wk <= white; ++wk) {
            if (black == white && wk > bk) continue;
            if (most_kings >= 0 && (bk > most_kings || wk > most_kings)) continue;
            const char text[] = {
                'd',       'b', digit(black + white), '-', digit(black - bk), digit(bk), digit(white - wk),
                digit(wk), '\0'};
            add_name(list, text, black + white, black);
        }
    }
}

}  // namespace

void make_file_list(EgdbType type, int max_pieces, int max_kings_1side_8pcs, EgdbFileList& list) {
    const EgdbTypeRules rules = egdb_type_rules(type);
    list.count = 0;
    for (int n = 2; n <= rules.most_pieces; ++n) {
        if (n <= rules.single_limit) {
            char text[EGDB_NAME_SIZE];
            std::snprintf(text, sizeof text, "db%d", n);
            add_name(list, text, n, std::min(n - 1, EGDB_MAX_SIDE));
            continue;
        }
        if (n > max_pieces) continue;
        const int most_kings = rules.limits_kings_of_eight && n == 8 ? max_kings_1side_8pcs : -1;
        for (int black = 1; black < n && black <= EGDB_MAX_SIDE; ++black)
            if (n - black <= black) add_materials(list, black, n - black, most_kings);
    }
}
