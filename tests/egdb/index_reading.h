// An index text as it is read for a data file of some size.
#pragma once

#include <memory>
#include <string>

#include "egdb/index_file.h"
#include "tests/egdb/database_folder.h"

struct IndexReading {
    EgdbDatabase database;
    DbFile& file;
    int64_t memory = CPRSUBDATABASE_BYTES;
    int status = 0;

    IndexReading(EgdbType type, const std::string& text, int64_t data_bytes) : file(database.files[0]) {
        const int64_t block = egdb_format(type).block_bytes;
        database_log.clear();
        database.type = type;
        database.log = keep_log;
        database.cprsubdatabase = std::make_unique<Cprsubdatabase>();
        file.data_bytes = data_bytes;
        file.num_cache_blocks = static_cast<int32_t>((data_bytes + block - 1) / block);
        status = read_index_text(database, file, text.data(), text.size(), "FILE", memory);
    }

    const Subslice& at(const Material& m, int side, int number = 0) const {
        return *find_subslice(database, m, side, number * SUBSLICE_POSITIONS);
    }
};
