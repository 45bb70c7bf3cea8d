// The signature of the search: how many nodes the fixed positions take. It changes when the search, the
// evaluation or the weights change, and only on purpose: a commit that changes it says why.
#include <gtest/gtest.h>

#include "tests/cli/program.h"

namespace {

constexpr int DEPTH = 13;
constexpr char SIGNATURE[] = "nodes 20257682,";
// Of the weights that the signature was taken with.
constexpr uint64_t WEIGHTS_CHECKSUM = 18233742944379268108u;

// FNV-1a, 64 bits.
uint64_t checksum(const std::string& bytes) {
    uint64_t sum = 0xcbf29ce484222325;
    for (const char byte : bytes) sum = (sum ^ static_cast<unsigned char>(byte)) * 0x100000001b3;
    return sum;
}

TEST(Signature, TheSearchTakesTheSameNodes) {
    ASSERT_EQ(checksum(read_text(PROJECT_FOLDER "/data/weights.bin")), WEIGHTS_CHECKSUM)
        << "other weights have another signature";
    const std::string arguments = "bench --depth " + std::to_string(DEPTH);
    for (int run = 0; run < 2; ++run) {
        const ProgramResult result = run_program(arguments);
        EXPECT_EQ(result.status, 0) << result.errors;
        EXPECT_EQ(last_line(result.output).substr(0, sizeof SIGNATURE - 1), SIGNATURE)
            << last_line(result.output);
    }
}

}  // namespace
