#include "egdb/egdb_open.h"

#include <array>
#include <cstdio>
#include <new>

#include "egdb/identify.h"
#include "egdb/mtc_open.h"
#include "egdb/open_options.h"
#include "egdb/wld_open.h"

namespace {

// Who opens the databases of a type. A type that has no row is known but cannot be opened.
struct DriverRow {
    EgdbType type;
    OpenEgdb (*open)(const EgdbOpenRequest& request);
};
constexpr std::array<DriverRow, 2> DRIVERS{{{EGDB_WLD, open_wld}, {EGDB_MTC, open_mtc}}};

const char* name_of_type(EgdbType type) {
    switch (type) {
        case EGDB_WLD_FIXED_CODES:
            return ".cpr with fixed codes";
        case EGDB_MTC:
            return ".cpr_mtc";
        case EGDB_WLD_VALUE_LISTS:
            return ".cpr with value lists";
        default:
            return ".cpr1";
    }
}

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
    for (const DriverRow& row : DRIVERS)
        if (row.type == type) return row.open(request);
    char line[1024];
    std::snprintf(line, sizeof line, "%s holds a database of type %d (%s), which this version cannot open\n",
                  folder.c_str(), static_cast<int>(type), name_of_type(type));
    if (log) log(line);
    return nullptr;
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
