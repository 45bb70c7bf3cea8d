#include "cli/egdb_verify_command.h"

#include <cstdio>
#include <memory>
#include <string>

#include "base/files.h"
#include "cli/console.h"
#include "egdb/egdb_format.h"
#include "egdb/identify.h"
#include "egdb/numbering.h"
#include "egdb/verify.h"

namespace {

struct VerifyOptions {
    std::string folder;
    int max_pieces = EGDB_MAX_PIECES;
};

void print_text(const char* text) {
    std::fputs(text, stdout);
    std::fflush(stdout);
}

bool has_file(const std::string& folder, const std::string& name) {
    return file_size(folder_prefix(folder) + name) >= 0;
}

// By the small index files, which every database has. Of two forms that have the same names it is the one of
// which checksums are known.
bool type_by_names(const std::string& folder, EgdbType& type) {
    for (const EgdbType candidate : {EGDB_WLD, EGDB_WLD_VALUE_LISTS, EGDB_MTC}) {
        for (const char* const name : {"db2", "db3", "db4"}) {
            if (!has_file(folder, std::string(name) + egdb_format(candidate).index_extension)) continue;
            type = candidate;
            return true;
        }
    }
    return false;
}

// A database whose largest index is damaged cannot be told as one, but its files are still to be checked.
void run_verify(const VerifyOptions& options) {
    VerifyFiles files;
    files.folder = options.folder;
    files.max_pieces = options.max_pieces;
    files.log = print_text;
    int32_t pieces = 0;
    if (identify_egdb(options.folder, files.type, pieces) != 0 && !type_by_names(options.folder, files.type))
        return fail("no database in %s", options.folder.c_str());
    if (files.type == EGDB_MTC) return fail("no checksums of moves to conversion are known");
    catch_interrupt();
    const VerifyListener listener{[](void*, const char* text) { print_text(text); }, nullptr};
    const int errors = verify_files(files, listener, &interrupted, {});
    if (errors == 0 && files.type != EGDB_WLD_FIXED_CODES) std::printf("\n");
    if (interrupted) return fail("stopped");
    if (errors > 0) fail("the files in %s could not all be verified", options.folder.c_str());
}

}  // namespace

void add_egdb_verify_command(CLI::App& egdb) {
    CLI::App* const command = egdb.add_subcommand(
        "verify", "Check the files of a database against the known checksums; none is opened as a database");
    const auto options = std::make_shared<VerifyOptions>();
    command->add_option("DIR", options->folder)->required();
    command->add_option("--max-pieces", options->max_pieces, "Check no files of more pieces")
        ->check(CLI::Range(2, EGDB_MAX_PIECES))
        ->capture_default_str();
    command->callback([options] { run_verify(*options); });
}
