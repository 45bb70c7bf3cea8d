#include "shell/system_log.h"

#include <gtest/gtest.h>

#include <cstring>

#include "base/log.h"
#include "tests/base/scratch_folder.h"

namespace {

std::string joined(const std::vector<std::string>& lines) {
    std::string text;
    for (const std::string& line : lines) text += line;
    return text;
}

}  // namespace

TEST(SystemLog, TheLinesToTheByte) {
    ProgramPaths paths = make_program_paths("/opt/t/", "/data/", 3);
    paths.program_file = "/opt/t/tessarin";
    Settings record = make_default_settings({});
    record.search_threads = 4;
    record.hash_mb = 256;
    record.wld_enable = 1;
    store_setting_text(record.wld_folder, "/opt/t/wld_database");
    record.wld_cache_mb = 13644;
    record.wld_max_pieces = 7;
    record.wld_max_kings_8 = -1;
    record.wld_parallel_init = 1;
    record.mtc_enable = 0;
    store_setting_text(record.mtc_folder, "/opt/t/mtc_database");
    MemoryFigures memory;
    memory.total_physical = (int64_t{16000} << 20) + 1048575;
    memory.free_physical = int64_t{4000} << 20;
    memory.total_page_file = int64_t{2048} << 20;
    memory.free_page_file = int64_t{2047} << 20;
    memory.total_virtual = int64_t{1} << 47;
    memory.free_virtual = (int64_t{1} << 47) - 1;
    EXPECT_EQ(joined(system_info_lines("Thu Jan  1 00:00:00 1970\n", paths, record, memory)),
              "Thu Jan  1 00:00:00 1970\n"
              "engine: Tessarin International(x64)[3] 1.60b\n"
              "program filename: /opt/t/tessarin\n"
              "program path: /opt/t/\n"
              "program data path: /data/\n"
              "search threads: 4\n"
              "percent of memory in use: 75\n"
              "total Mbytes of physical memory: 16000\n"
              "free Mbytes of physical memory: 4000\n"
              "total Mbytes of paging file: 2048\n"
              "free Mbytes of paging file: 2047\n"
              "total Mbytes of virtual memory: 134217728\n"
              "free Mbytes of virtual memory: 134217727\n"
              "hashtable size: 256\n"
              "WLD enable: 1\n"
              "WLD directory: /opt/t/wld_database\n"
              "WLD memory: 13644\n"
              "WLD max pieces: 7\n"
              "WLD max kings 1 side 8 pieces: -1\n"
              "WLD parallel init: 1\n"
              "MTC enable: 0\n"
              "MTC directory: /opt/t/mtc_database\n");
}

// Settings as they stand, without a NUL anywhere.
TEST(SystemLog, AnyRecordCanBeShown) {
    Settings record;
    std::memset(&record, 'x', sizeof record);
    const auto lines = system_info_lines("now\n", {}, record, {});
    ASSERT_EQ(lines.size(), 22u);
    EXPECT_EQ(lines[15], "WLD directory: " + std::string(260, 'x') + "\n");
    EXPECT_EQ(lines[21], "MTC directory: " + std::string(260, 'x') + "\n");
    EXPECT_EQ(lines[5], "search threads: 2021161080\n");
    for (const std::string& line : lines) EXPECT_EQ(line.find('\n'), line.size() - 1);
}

TEST(SystemLog, LinesAreAppendedToTheLog) {
    const ScratchFolder folder;
    log_path = folder.file("log");
    write_content(log_path, "before\n");
    log_system_info();
    log_system_info();
    const std::string text = content_of(log_path);
    log_path.clear();
    EXPECT_TRUE(text.starts_with("before\n"));
    EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 1 + 2 * 22);
    EXPECT_NE(text.find("\nengine: "), std::string::npos);
}
