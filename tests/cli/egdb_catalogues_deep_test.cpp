// The table of the file format is what the program makes of its own endings.
#include <gtest/gtest.h>

#include "tests/cli/program.h"

TEST(CliEgdbDeep, CataloguesAreThoseOfTheFormat) {
    const TemporaryFolder folder;
    const ProgramResult result = run_program("egdb catalogues table.cpp", "", folder.path);
    EXPECT_EQ(result.status, 0) << result.errors;
    EXPECT_EQ(result.output, "");
    EXPECT_TRUE(read_text(folder.path / "table.cpp") ==
                read_text(PROJECT_FOLDER "/egdb/catalogues_table.cpp"));
}
