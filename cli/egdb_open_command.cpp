#include "cli/egdb_open_command.h"

#include <cstdio>
#include <memory>
#include <string>

#include "cli/console.h"
#include "egdb/egdb_open.h"
#include "egdb/identify.h"
#include "egdb/open_options.h"
#include "egdb/wld_open.h"

namespace {

struct OpenOptions {
    std::string folder;
    int cache_mb = 1024;
    EgdbLimits limits;
};

void print_text(const char* text) { std::fputs(text, stdout); }

void print_files(const EgdbDatabase& database) {
    for (int32_t i = 0; i < database.file_count; ++i) {
        const DbFile& file = database.files[static_cast<size_t>(i)];
        if (!file.is_present) continue;
        std::printf("%s %lld bytes, %d blocks, %s\n", file.name.data(),
                    static_cast<long long>(file.data_bytes), file.num_cache_blocks,
                    file.autoload ? "whole in memory" : "through the cache");
    }
    std::printf("cache blocks %d\n", database.numcacheblocks);
}

void run_open(const OpenOptions& options) {
    EgdbType type{};
    int32_t pieces = 0;
    if (identify_egdb(options.folder, type, pieces) != 0)
        return fail("no database in %s", options.folder.c_str());
    std::printf("found type %d, pieces %d\n", static_cast<int>(type), pieces);
    const OpenEgdb driver =
        egdb_open(options_text(options.limits).c_str(), options.cache_mb, options.folder, print_text);
    if (!driver) return fail("the database in %s cannot be opened", options.folder.c_str());
    if (driver->type != EGDB_MTC) print_files(wld_database(*driver));
    int32_t most = 0, one_side = 0, kings_of_nine = 0, kings_of_eight = 0;
    driver->get_pieces(driver->handle, &most, &one_side, &kings_of_nine, &kings_of_eight);
    std::printf(
        "opened type %d, pieces %d, of one side %d, kings with nine pieces %d, of one side with eight %d\n",
        static_cast<int>(driver->type), most, one_side, kings_of_nine, kings_of_eight);
}

}  // namespace

void add_egdb_open_command(CLI::App& egdb) {
    CLI::App* const command = egdb.add_subcommand(
        "open", "Open a database as the engine does, and print the log of it and what has been opened");
    const auto options = std::make_shared<OpenOptions>();
    command->add_option("DIR", options->folder)->required();
    command->add_option("--cache", options->cache_mb, "Megabytes of memory for it")
        ->check(CLI::Range(0, 1 << 20))
        ->capture_default_str();
    command->add_option("--max-pieces", options->limits.maxpieces, "Most pieces to open")
        ->check(CLI::Range(2, 9));
    command
        ->add_option("--max-kings", options->limits.maxkings_1side_8pcs,
                     "Most kings of one side with eight pieces")
        ->check(CLI::Range(0, 5));
    command->callback([options] { run_open(*options); });
}
