// Saving on disks that fail, in processes that die, and in two processes at once.
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include "tests/base/faulty_files.h"
#include "tests/control/settings_images.h"
#include "tests/shell/settings_folder.h"

namespace {

constexpr int CALLS_OF_A_SAVE = 16;  // eight for each file

// What is saved: records that differ from those of `full_image` in each field.
void fill_with_new_values() {
    settings = make_default_settings({});
    settings2 = make_default_settings2();
}

struct SavedFiles {
    std::string old_image = full_image().sealed(), old_image2 = full_image2().sealed();
    std::string new_image, new_image2;

    SavedFiles() {
        fill_with_new_values();
        settings.checksum = settings_checksum(settings);
        settings2.checksum = settings_checksum(settings2);
        new_image = image_of(settings);
        new_image2 = image_of(settings2);
    }
    bool whole(const SettingsFolder& folder) const {
        const std::string file = content_of(folder.file()), file2 = content_of(folder.file2());
        return (file == old_image || file == new_image) && (file2 == old_image2 || file2 == new_image2);
    }
};

}  // namespace

TEST(SettingsFaults, AFailingCallLeavesOldOrNewFiles) {
    const SavedFiles files;
    for (const Fault fault : {Fault::FAIL, Fault::SHORT_WRITE}) {
        int failures = 0;
        for (int call = 0; call <= CALLS_OF_A_SAVE; ++call) {
            const SettingsFolder folder;
            folder.write(files.old_image, files.old_image2);
            fill_with_new_values();
            const FaultyFiles faulty(fault, call);
            const int status = save_settings();
            failures += status;
            EXPECT_TRUE(files.whole(folder)) << call;
            if (status == 0) {
                EXPECT_EQ(content_of(folder.file()), files.new_image);
                EXPECT_EQ(content_of(folder.file2()), files.new_image2);
            }
            EXPECT_EQ(entries_of(program_paths.settings_folder), 2u) << call;
        }
        EXPECT_EQ(failures, fault == Fault::FAIL ? 10 : 2);
    }
}

TEST(SettingsFaults, ACrashAtAnyCallLeavesOldOrNewFiles) {
    const SavedFiles files;
    int crashes = 0;
    for (const Fault fault : {Fault::CRASH_BEFORE, Fault::CRASH_MIDWAY, Fault::CRASH_AFTER})
        for (int call = 0; call <= CALLS_OF_A_SAVE; ++call) {
            const SettingsFolder folder;
            folder.write(files.old_image, files.old_image2);
            fill_with_new_values();
            const pid_t child = fork();
            if (child == 0) {
                const FaultyFiles faulty(fault, call);
                _exit(save_settings());
            }
            int status = -1;
            ASSERT_EQ(waitpid(child, &status, 0), child);
            ASSERT_TRUE(WIFEXITED(status));
            crashes += WEXITSTATUS(status) == CRASH_STATUS;
            EXPECT_TRUE(files.whole(folder)) << call;
            // The next start finds two records that it can use.
            load_settings();
            EXPECT_FALSE(settings_were_reset);
        }
    EXPECT_EQ(crashes, 2 * CALLS_OF_A_SAVE + 2);
}

TEST(SettingsFaults, TwoProcessesAtOnceLeaveWholeFiles) {
    constexpr int SAVES = 40;
    const SavedFiles files;
    const SettingsFolder folder;
    folder.write(files.old_image, files.old_image2);
    pid_t children[2];
    for (int i = 0; i < 2; ++i) {
        children[i] = fork();
        if (children[i] != 0) continue;
        settings_hooks.language_loaded = [](int32_t) { return true; };
        if (i == 0) load_settings();
        if (i == 1) fill_with_new_values();
        int failures = 0;
        for (int n = 0; n < SAVES; ++n) failures += save_settings();
        _exit(failures);
    }
    int running = 2, readings = 0;
    while (running > 0) {
        EXPECT_TRUE(files.whole(folder));
        ++readings;
        int status = -1;
        if (waitpid(-1, &status, WNOHANG) <= 0) continue;
        EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
        --running;
    }
    EXPECT_TRUE(files.whole(folder));
    EXPECT_GT(readings, 10);
    EXPECT_EQ(entries_of(program_paths.settings_folder), 2u);
}
