// The builder of opening books and its workers. Each worker is a process that is told positions and answers
// with their analyses, so every processor searches with a table and a history of its own.
#include <algorithm>
#include <atomic>
#include <chrono>
#include <cinttypes>
#include <csignal>
#include <cstdio>
#include <iostream>
#include <memory>
#include <mutex>
#include <string>
#include <thread>

#include "base/checksum.h"
#include "base/child_process.h"
#include "base/files.h"
#include "base/paths.h"
#include "base/system_info.h"
#include "cli/book_commands.h"
#include "cli/console.h"
#include "cli/options.h"
#include "core/movegen.h"
#include "eval/weights.h"
#include "search/engine_settings.h"
#include "search/table.h"
#include "tools/book_build.h"
#include "tools/book_work.h"

namespace {

using Clock = std::chrono::steady_clock;

constexpr int MAX_BOOK_JOBS = 64;
constexpr int64_t MAX_BOOK_POSITIONS = 50000000;
constexpr int32_t MOST_LINE_MOVES = 100;
constexpr int32_t MOST_LINE_MARGIN = 1000;

struct WorkerOptions {
    std::string weights;  // empty: those of the program
    uint64_t quick_nodes = 8000;
    int hash_mb = 8;
};

struct BuildCommand {
    BookBuildOptions build;
    WorkerOptions worker;
    std::string book, work_file;
    int jobs = 1;
};

// What the jobs share, all of it under the lock but the options.
struct Build {
    const BuildCommand& command;
    std::vector<ChildProcess> children;
    BookWork work;
    std::mutex lock;
    std::string failure;
    int64_t known_before = 0;  // analyses that were there at the start
    int64_t asked = 0;         // analyses that the graph has asked for
    int64_t made = 0;          // of them, by the workers
    Clock::time_point start = Clock::now();

    explicit Build(const BuildCommand& c) : command(c), children(static_cast<size_t>(c.jobs)) {}
};

bool start_worker(const WorkerOptions& options, ChildProcess& child) {
    const std::vector<std::string> arguments = {"tessarin-cli",  "book-worker",
                                                "--weights",     options.weights,
                                                "--quick-nodes", std::to_string(options.quick_nodes),
                                                "--hash",        std::to_string(options.hash_mb)};
    return start_child(child, THIS_PROGRAM, arguments) == 0;
}

void show_state(const Build& build) {
    // How many the lines will need is not known.
    const int64_t all = std::max(build.command.build.positions, build.asked);
    const double elapsed = std::chrono::duration<double>(Clock::now() - build.start).count();
    const double left = elapsed / static_cast<double>(build.made) * static_cast<double>(all - build.asked);
    show_progress(std::to_string(build.asked) + " of " + std::to_string(all) + " positions, " +
                  std::to_string(build.made) + " in this run, time left " + duration_text(left));
}

// A batch that is shared among the workers.
struct Batch {
    std::span<const BookTask> tasks;
    std::vector<BookAnalysis>& analyses;
    std::atomic<size_t> next = 0;
};

void end_with(Build& build, const std::string& failure) {
    const std::lock_guard guard(build.lock);
    if (build.failure.empty()) build.failure = failure;
}

void analyse_one(Build& build, ChildProcess& child, const BookTask& task, BookAnalysis& analysis) {
    std::string line;
    BookTask answered;
    if (write_line(child, book_task_line(task)) != 0 || read_line(child, line) != 0 ||
        !read_book_analysis_line(line, answered, analysis))
        return end_with(build, "a worker failed");
    const std::lock_guard guard(build.lock);
    ++build.asked;
    ++build.made;
    if (keep_book_work(build.work, task, analysis) != 0)
        build.failure = "cannot write " + build.command.work_file;
    show_state(build);
}

bool goes_on(Build& build) {
    const std::lock_guard guard(build.lock);
    return !interrupted && build.failure.empty();
}

void run_worker_thread(Build& build, Batch& batch, ChildProcess& child) {
    while (goes_on(build)) {
        const size_t i = batch.next++;
        if (i >= batch.tasks.size()) return;
        // Known ones were filled in before.
        if (batch.analyses[i].quick.empty()) analyse_one(build, child, batch.tasks[i], batch.analyses[i]);
    }
}

bool analyse_batch(void* context, std::span<const BookTask> tasks, std::vector<BookAnalysis>& analyses) {
    Build& build = *static_cast<Build*>(context);
    analyses.assign(tasks.size(), {});
    bool all_known = true;
    for (size_t i = 0; i < tasks.size(); ++i) {
        const BookAnalysis* const known = find_book_work(build.work, tasks[i]);
        all_known = all_known && known;
        if (!known) continue;
        analyses[i] = *known;
        ++build.asked;
    }
    if (all_known) return !interrupted;
    Batch batch{tasks, analyses};
    std::vector<std::jthread> threads;
    threads.reserve(build.children.size());
    for (ChildProcess& child : build.children)
        threads.emplace_back([&build, &batch, &child] { run_worker_thread(build, batch, child); });
    threads.clear();
    return goes_on(build);
}

// How the positions are analysed, as the head of the work file.
std::string terms_line(const WorkerOptions& options) {
    char text[200];
    std::snprintf(text, sizeof text,
                  "opening book work 2, quick nodes %" PRIu64 ", hash %d, weights %08" PRIx32,
                  options.quick_nodes, options.hash_mb, crc32(&weights, WEIGHTS_BYTES));
    return text;
}

bool open_work(Build& build) {
    const std::string& path = build.command.work_file;
    switch (open_book_work(path, terms_line(build.command.worker), build.work)) {
        case BOOK_WORK_OPEN:
            build.known_before = static_cast<int64_t>(build.work.known.size());
            return true;
        case BOOK_WORK_OTHER_TERMS:
            fail("%s was begun with other quick nodes, table or weights", path.c_str());
            return false;
        case BOOK_WORK_TAKEN:
            fail("another build writes %s", path.c_str());
            return false;
        case BOOK_WORK_CANNOT_OPEN:
            fail("cannot open %s", path.c_str());
    }
    return false;
}

void write_result(const BuildCommand& command, const BookGraph& graph) {
    BookFileFigures figures;
    const std::vector<BookPosition> positions = book_positions(graph, command.build.second_margin);
    if (write_book(command.book, positions, figures) != 0)
        return fail("cannot write %s", command.book.c_str());
    std::printf("positions %" PRId64 " left out %" PRId64 " with kings %" PRId64
                " king sets %d slots %d longest probe %d nodes %" PRIu64 "\n",
                figures.positions, figures.left_out, figures.with_kings, figures.king_sets, figures.slots,
                figures.max_probes, graph.searched_nodes);
}

void run_build(BuildCommand command) {
    catch_interrupt();
    std::signal(SIGTERM, [](int) { interrupted = true; });
    command.book = absolute_path(command.book);
    if (command.work_file.empty()) command.work_file = command.book + ".work";
    command.work_file = absolute_path(command.work_file);
    if (command.work_file == command.book || same_file(command.work_file, command.book))
        return fail("the book cannot take the place of its work file");
    std::string& weights_file = command.worker.weights;
    weights_file = weights_file.empty() ? enter_program_folder() + WEIGHTS_FILE : weights_file;
    weights_file = absolute_path(weights_file);
    if (!check_weights(weights_file)) return;
    if (load_weights_from(weights_file) != 0) return fail("cannot open %s", weights_file.c_str());
    Build build(command);
    if (!open_work(build)) return;
    for (ChildProcess& child : build.children)
        if (!start_worker(command.worker, child)) return fail("cannot start the workers");
    BookGraph graph;
    const bool grown = grow_book(graph, command.build, {&build, analyse_batch});
    show_progress("");
    if (!build.failure.empty()) return fail("%s", build.failure.c_str());
    if (!grown) return fail("stopped; the same command goes on from here");
    write_result(command, graph);
}

void run_worker(const WorkerOptions& options) {
    std::signal(SIGINT, SIG_IGN);  // the builder ends its workers itself
    engine_settings.hash_size_mb = options.hash_mb;
    if (load_weights_from(options.weights) != 0) return fail("cannot open %s", options.weights.c_str());
    if (tt_allocate() != 0) return fail("Cannot allocate hashtable");
    std::string line;
    BookTask task;
    MoveList list;
    while (std::getline(std::cin, line)) {
        if (!read_book_task_line(line, task) || generate_moves(task.position, list, task.position.side) == 0)
            return fail("not a question to a worker: %.200s", line.c_str());
        std::cout << book_analysis_line(task, analyse_book_position(task, options.quick_nodes)) << std::endl;
    }
}

void add_nodes_option(CLI::App& command, const char* name, uint64_t& nodes, const char* help) {
    command.add_option(name, nodes, help)
        ->check(CLI::Range(uint64_t{1}, uint64_t{1} << 40))
        ->capture_default_str();
}

void add_worker_options(CLI::App& command, WorkerOptions& options) {
    command.add_option("--weights", options.weights, "Weights file; the program's own if none is given");
    add_nodes_option(command, "--quick-nodes", options.quick_nodes,
                     "Nodes of the short search of each move of a position");
    add_hash_option(command, options.hash_mb, "Megabytes of each worker's transposition table")
        ->capture_default_str();
}

void add_line_options(CLI::App& command, BookLineOptions& options) {
    command
        .add_option("--line-moves", options.moves,
                    "Moves of the book's side in lines as games against a program without a book are\n"
                    "likely to go, which are analysed behind all else; none by default")
        ->check(CLI::Range(0, MOST_LINE_MOVES));
    command.add_option("--line-variants", options.variants, "Lines from each start position for each side")
        ->check(CLI::Range(1, MOST_BOOK_VARIANTS))
        ->capture_default_str();
    add_nodes_option(command, "--line-nodes", options.nodes, "Nodes of the searches of the book's side");
    add_nodes_option(command, "--line-reply-nodes", options.reply_nodes,
                     "Nodes of that program's searches, in some variants half as many more");
    command
        .add_option("--line-margin", options.margin,
                    "Points by which a move of the book's side in lines may look worse than the best one\n"
                    "and still be analysed")
        ->check(CLI::Range(0, MOST_LINE_MARGIN))
        ->capture_default_str();
}

void add_growth_options(CLI::App& command, BookBuildOptions& options) {
    command.add_option("--positions", options.positions, "Positions to analyse")
        ->check(CLI::Range(int64_t{0}, MAX_BOOK_POSITIONS))
        ->capture_default_str();
    add_nodes_option(command, "--nodes", options.nodes, "Nodes of each position's search");
    command
        .add_option("--deep-positions", options.deep_positions,
                    "Positions, the cheapest, that are searched with more nodes")
        ->check(CLI::Range(int64_t{0}, MAX_BOOK_POSITIONS))
        ->capture_default_str();
    add_nodes_option(command, "--deep-nodes", options.deep_nodes, "Nodes of these");
    const auto add_cost = [&command](const char* name, int32_t& cost, const char* help) {
        command.add_option(name, cost, help)->check(CLI::Range(0, 1000000))->capture_default_str();
    };
    add_cost("--ply-cost", options.costs.ply, "What a ply costs; the cheapest positions are analysed first");
    add_cost("--own-loss-cost", options.costs.own_loss,
             "What a point costs that is given away by the side that plays by the book");
    add_cost("--other-loss-cost", options.costs.other_loss,
             "What a point costs that its opponent gives away");
    add_cost("--ballot-cost", options.ballot_cost, "What the two-move ballots cost");
    add_cost("--decided", options.costs.decided, "No position is analysed behind such a value");
    add_cost("--second-margin", options.second_margin, "Points that a second-best move may give away");
    add_line_options(command, options.lines);
}

}  // namespace

void add_book_build(CLI::App& book) {
    CLI::App* const command = book.add_subcommand(
        "build",
        "Build an opening book from the start position and the two-move ballots.\n"
        "Every analysis is kept in a work file: a build that was stopped is continued by the same command,\n"
        "and a finished one grows when more positions are asked for.");
    const auto options = std::make_shared<BuildCommand>();
    options->jobs = processor_count();
    command->add_option("FILE", options->book, "Book to write when all positions are there")->required();
    command->add_option("--work", options->work_file, "Work file; FILE.work if none is given");
    add_growth_options(*command, options->build);
    add_worker_options(*command, options->worker);
    command->add_option("--jobs", options->jobs, "Positions searched at a time, each by a process")
        ->check(CLI::Range(1, MAX_BOOK_JOBS))
        ->capture_default_str();
    command->callback([options] { run_build(*options); });
}

void add_book_worker_command(CLI::App& program) {
    CLI::App* const command = program.add_subcommand("book-worker", "A worker of `book build`");
    command->group("");  // not for users, so not in the help
    const auto options = std::make_shared<WorkerOptions>();
    add_worker_options(*command, *options);
    command->callback([options] { run_worker(*options); });
}
