#include <cstdio>
#include <memory>
#include <string>

#include "cli/commands.h"
#include "cli/console.h"
#include "eval/weights.h"
#include "tools/seed_weights.h"

void add_weights_command(CLI::App& program) {
    CLI::App* const command = program.add_subcommand("weights", "Make weights files");
    command->require_subcommand(1);
    CLI::App* const seed = command->add_subcommand(
        "seed", "Write a first weights file from a few plain values, with empty pattern tables");
    const auto path = std::make_shared<std::string>();
    seed->add_option("--out", *path, "File to write")->required();
    seed->callback([path] {
        switch (seed_weights(*path)) {
            case 0:
                std::printf("%s: %zu bytes\n", path->c_str(), WEIGHTS_BYTES);
                break;
            case 1:
                fail("cannot write %s", path->c_str());
                break;
            default:
                fail("not enough memory");
                break;
        }
    });
}
