#include "egdb/verify.h"

#include <algorithm>
#include <cstdarg>
#include <cstdio>

#include "base/input_file.h"
#include "egdb/checksums.h"
#include "egdb/egdb_format.h"
#include "egdb/file_crc.h"
#include "egdb/identify.h"

namespace {

struct Verification {
    const VerifyFiles& files;
    const std::atomic<bool>* abort;
    std::string folder;
};

// The file's checksum; 0 if the check was broken off or the file cannot be read, which is no file's.
uint32_t sum_of(const Verification& v, const InputFile& file) {
    uint32_t crc = 0;
    return file_crc(file, v.abort, crc) == 0 ? crc : 0;
}

bool is_known(const FileChecksums& known, uint32_t crc) {
    const auto end = known.crcs.begin() + known.count;
    return std::find(known.crcs.begin(), end, crc) != end;
}

__attribute__((format(printf, 2, 3))) void tell(const VerifyListener& listener, const char* format, ...) {
    char text[1024];
    va_list arguments;
    va_start(arguments, format);
    std::vsnprintf(text, sizeof text, format, arguments);
    va_end(arguments);
    if (listener.message) listener.message(listener.context, text);
}

// One file of a pair. False if it is not in the list or not there; nothing is told then.
bool check_file(const Verification& v, const std::string& name, const VerifyListener& listener,
                const VerifyTexts& texts, int& errors) {
    const FileChecksums known = checksums_of(v.files.type, name);
    InputFile file;
    const std::string path = v.folder + name;
    if (!known.listed || !open_input(path, file)) return false;
    tell(listener, "%s  ", path.c_str());
    if (known.count == 0) {
        tell(listener, "%s\n", texts.unchecked);
        return true;
    }
    const bool good = is_known(known, sum_of(v, file));
    if (!good) ++errors;
    tell(listener, "%s\n", good ? texts.good : texts.failed);
    return true;
}

int check_pair(const Verification& v, const std::string& name, const VerifyListener& listener,
               const VerifyTexts& texts) {
    const EgdbFormat format = egdb_format(v.files.type);
    int errors = 0;
    // Without its index the data file is passed over too.
    if (check_file(v, name + format.index_extension, listener, texts, errors))
        check_file(v, name + format.data_extension, listener, texts, errors);
    return errors;
}

// The form that only writes to the log. True if nothing was wrong.
bool check_for_log(const Verification& v, const std::string& name, const VerifyListener& log) {
    const FileChecksums known = checksums_of(v.files.type, name);
    if (known.count == 0) {
        tell(log, "No crc value known for file %s\n", name.c_str());
        return false;
    }
    const std::string path = v.folder + name;
    InputFile file;
    if (!open_input(path, file)) {
        tell(log, "Cannot open file %s for crc check.\n", path.c_str());
        return false;
    }
    tell(log, "%s\n", path.c_str());
    const uint32_t crc = sum_of(v, file);
    if (is_known(known, crc)) return true;
    tell(log, "file %s failed crc check, expected %08x, got %08x\n", path.c_str(), known.crcs[0], crc);
    return false;
}

template <typename Visit>
void for_names(const VerifyFiles& files, const Visit& visit) {
    EgdbFileList list;
    make_file_list(files.type, files.max_pieces, files.maxkings_1side_8pcs, list);
    for (int32_t i = 0; i < list.count; ++i) {
        const EgdbFileName& name = list.names[static_cast<size_t>(i)];
        if (name.pieces <= files.max_pieces) visit(std::string(name.text.data()));
    }
}

}  // namespace

int verify_files(const VerifyFiles& files, const VerifyListener& listener, const std::atomic<bool>* abort,
                 const VerifyTexts& texts) {
    const Verification v{files, abort, folder_prefix(files.folder)};
    if (files.type == EGDB_WLD_FIXED_CODES || files.type == EGDB_MTC) {
        using Log = void (*)(const char* text);
        Log log = files.log;
        const VerifyListener to_log{[](void* context, const char* text) {
                                        if (const Log write = *static_cast<Log*>(context)) write(text);
                                    },
                                    &log};
        bool all_good = true;
        for_names(files, [&](const std::string& name) {
            for (const char* const extension : {".idx", ".cpr"})
                if (!check_for_log(v, name + extension, to_log)) all_good = false;
        });
        return all_good ? 0 : 1;
    }
    int errors = 0;
    for_names(files, [&](const std::string& name) { errors += check_pair(v, name, listener, texts); });
    if (errors > 0)
        tell(listener, "%d %s\n", errors, texts.errors);
    else
        tell(listener, "%s", texts.no_errors);
    return errors;
}
