#include "tools/train.h"

#include <chrono>
#include <cinttypes>
#include <cstdio>
#include <memory>
#include <new>
#include <vector>

#include "base/files.h"
#include "base/paths.h"
#include "cli/commands.h"
#include "cli/console.h"
#include "cli/options.h"
#include "tools/seed_weights.h"

namespace {

using Clock = std::chrono::steady_clock;

struct TrainArguments {
    std::vector<std::string> files;
    std::string out;
    TrainOptions train;
    TrainingSetOptions set;
};

// What the progress line is about; the callback of the training has no other way to it.
struct TrainRun {
    int epochs = 0;
    Clock::time_point start;
};
TrainRun run;

double percent(int64_t part, int64_t whole) {
    return whole > 0 ? 100.0 * static_cast<double>(part) / static_cast<double>(whole) : 0.0;
}

void print_fit(const char* name, const Fit& fit) {
    std::printf("%-10s positions %" PRId64 ", loss %.5f, winner told %.1f%%\n", name, fit.positions, fit.loss,
                percent(fit.right, fit.decided));
}

bool report_training(const TrainProgress& progress) {
    const double elapsed = std::chrono::duration<double>(Clock::now() - run.start).count();
    if (progress.held_out) {
        show_progress("");
        std::printf("epoch %d: loss on learned games %.5f, on held-out games %.5f, %.0f sec\n",
                    progress.epoch, progress.learned_loss, progress.held_out->loss, elapsed);
        std::fflush(stdout);
    } else {
        const double left = progress.done > 0 ? elapsed / progress.done * (1 - progress.done) : 0;
        show_progress("epoch " + std::to_string(progress.epoch) + " of " + std::to_string(run.epochs) + ", " +
                      std::to_string(static_cast<int>(100 * progress.done)) + "%, time left " +
                      duration_text(left));
    }
    return !interrupted;
}

bool read_files(const TrainArguments& arguments, TrainingSet& set) {
    for (const std::string& file : arguments.files) {
        show_progress("reading " + file);
        const int status = read_games(file, arguments.set, set);
        show_progress("");
        if (status == SET_UNREADABLE) fail("cannot read %s", file.c_str());
        if (status == SET_NO_MEMORY) fail("not enough memory for the positions");
        if (status != SET_READ) return false;
    }
    if (set.faulty > 0) fail("%" PRId64 " records hold no position and were left out", set.faulty);
    std::printf("games %" PRId64 ", positions to learn %zu, held out %zu\n", set.games, set.learned.size(),
                set.held_out.size());
    return true;
}

void print_report(const TrainReport& report) {
    std::printf("kept epoch %d, a score of %.0f is 73%%, of a search %.0f\n", report.best_epoch, report.scale,
                report.score_scale);
    print_fit("first", report.first);
    print_fit("held out", report.best);
    print_fit("opening", report.phases[PHASE_OPENING]);
    print_fit("middle", report.phases[PHASE_MIDDLE]);
    print_fit("end", report.phases[PHASE_END]);
    if (report.cut > 0) std::printf("%" PRId64 " weights were cut to 16 bits\n", report.cut);
}

// The work of hours is not to end in a file that cannot be written, or over the games.
bool check_out(const TrainArguments& arguments) {
    for (const std::string& file : arguments.files) {
        if (!same_file(file, arguments.out)) continue;
        fail("the weights cannot take the place of %s", file.c_str());
        return false;
    }
    if (can_replace_file(arguments.out)) return true;
    fail("cannot write %s", arguments.out.c_str());
    return false;
}

void run_train(const TrainArguments& arguments) {
    if (!check_out(arguments)) return;
    TrainingSet set;
    if (!read_files(arguments, set)) return;
    const std::unique_ptr<Weights> record(new (std::nothrow) Weights{});
    if (!record) return fail("not enough memory");
    catch_interrupt();
    run = {arguments.train.epochs, Clock::now()};
    TrainReport report;
    switch (train(set, SEED_PARAMS, arguments.train, report_training, *record, report)) {
        case TRAINED:
            print_report(report);
            if (write_weights(arguments.out, *record) != 0) fail("cannot write %s", arguments.out.c_str());
            break;
        case TRAIN_NO_POSITIONS:
            fail("there is nothing to learn: too few games, or none of them was held out");
            break;
        case TRAIN_STOPPED:
            show_progress("");
            fail("stopped; nothing was written");
            break;
        default:
            fail("not enough memory");
            break;
    }
}

}  // namespace

void add_train_command(CLI::App& program) {
    CLI::App* const command = program.add_subcommand(
        "train",
        "Learn weights from files of self-play; the same files, options and program give the same weights");
    const auto a = std::make_shared<TrainArguments>();
    command->add_option("files", a->files, "Files of games made by selfplay")->required();
    command->add_option("--out", a->out, "Weights file to write")->required();
    command->add_option("--epochs", a->train.epochs, "Passes over the positions")
        ->check(CLI::Range(1, 1000))
        ->capture_default_str();
    command->add_option("--rate", a->train.rate, "Size of the first steps")
        ->check(number_within(1e-6, 10))
        ->capture_default_str();
    command->add_option("--decay", a->train.decay, "How strongly patterns are drawn towards zero")
        ->check(number_within(0, 1e6))
        ->capture_default_str();
    command
        ->add_option("--result-share", a->train.result_share,
                     "Share of the game's result in the target; the search's score has the rest")
        ->check(number_within(0, 1))
        ->capture_default_str();
    command->add_option("--man", a->train.man, "Points that a man is worth on average")
        ->check(number_within(1, 300))
        ->capture_default_str();
    command->add_option("--seed", a->train.seed, "Of the order of the positions")->capture_default_str();
    command->add_option("--held-out", a->set.held_out_share, "One game in so many is kept to measure with")
        ->check(CLI::Range(2, 1000000))
        ->capture_default_str();
    command->add_option("--every", a->set.every, "Learn from one position in so many")
        ->check(CLI::Range(1, 1000000))
        ->capture_default_str();
    command->callback([a] { run_train(*a); });
}
