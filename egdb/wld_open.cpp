#include "egdb/wld_open.h"

#include "egdb/wld_lookup.h"
#include "egdb/wld_pieces.h"

namespace {

EgdbValue lookup(void* handle, const Position& position, int side, bool conditional) {
    return wld_lookup(database_of(handle), position, side, conditional);
}

int get_pieces(void* handle, int32_t* maxpieces, int32_t* maxpieces_1side, int32_t* maxkings_9pcs,
               int32_t* maxkings_1side_8pcs) {
    wld_pieces(database_of(handle), *maxpieces, *maxpieces_1side, *maxkings_9pcs, *maxkings_1side_8pcs);
    return 0;
}

}  // namespace

OpenEgdb open_wld(const EgdbOpenRequest& request) { return open_database(request, {lookup, get_pieces}); }

const EgdbDatabase& wld_database(const EgdbDriver& driver) { return database_of(driver.handle); }
