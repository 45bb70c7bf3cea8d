#include "egdb/egdb_open.h"

#include <new>

#include "egdb/identify.h"
#include "egdb/mtc_open.h"
#include "egdb/open_options.h"
#include "egdb/wld_open.h"

namespace {

OpenEgdb open_identified(const char* options, int32_t cache_megabytes, const std::string& folder,
                         void (*log)(const char* text)) {
    EgdbOpenRequest request;
    EgdbType type{};
    if (identify_egdb(folder, type, request.pieces) != 0) {
        if (log) log("No egdb found\n");
        return nullptr;
    }
    int32_t maxpieces = 0;
    parse_options(options, maxpieces, request.maxkings_1side_8pcs);
    if (maxpieces > 0 && maxpieces < request.pieces) request.pieces = maxpieces;
    request.folder = folder;
    request.cache_megabytes = cache_megabytes;
    request.log = log;
    request.type = type;
    return type == EGDB_MTC ? open_mtc(request) : open_wld(request);
}

}  // namespace

OpenEgdb egdb_open(const char* options, int32_t cache_megabytes, const std::string& folder,
                   void (*log)(const char* text)) {
    try {
        return open_identified(options, cache_megabytes, folder, log);
    } catch (const std::bad_alloc&) {
        if (log) log("Out of memory opening the database.\n");
        return nullptr;
    }
}
