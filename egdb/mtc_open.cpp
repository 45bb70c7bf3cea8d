#include "egdb/mtc_open.h"

#include "egdb/mtc_lookup.h"
#include "egdb/wld_pieces.h"

namespace {

EgdbValue lookup(void* handle, const Position& position, int side, bool conditional) {
    return static_cast<EgdbValue>(mtc_lookup(database_of(handle), position, side, conditional));
}

// The limits of kings are those of values only.
int get_pieces(void* handle, int32_t* maxpieces, int32_t* maxpieces_1side, int32_t* maxkings_9pcs,
               int32_t* maxkings_1side_8pcs) {
    wld_pieces(database_of(handle), *maxpieces, *maxpieces_1side, *maxkings_9pcs, *maxkings_1side_8pcs);
    *maxkings_1side_8pcs = 0;
    return 0;
}

}  // namespace

OpenEgdb open_mtc(const EgdbOpenRequest& request) {
    EgdbOpenRequest of_type = request;
    of_type.type = EGDB_MTC;
    return open_database(of_type, {lookup, get_pieces});
}
