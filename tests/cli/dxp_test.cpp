// Games over the network on the console: two copies of the program play each other on this machine, each with
// a data folder of its own, and are ended at moments of their lives.
#include <gtest/gtest.h>

#include <chrono>
#include <csignal>
#include <map>
#include <memory>
#include <nlohmann/json.hpp>
#include <set>
#include <thread>
#include <vector>

#include "records/pdn_replay.h"
#include "tests/base/scratch_folder.h"
#include "tests/cli/program.h"
#include "tests/dxp/scripted_player.h"

namespace {

constexpr const char* STARTS =
    "[Event \"one\"]\n1. 32-28 19-23 *\n\n[Event \"two\"]\n[FEN \"B:W28,32,33,37,38:B8,9,13,14,19\"]\n*\n";

class CliDxp : public testing::Test {
  protected:
    CliDxp() { folder.write("starts.pdn", STARTS); }

    // A copy with a data folder of the name below the test's, and by itself on the machine: it is copy 0,
    // whose files have no number in their names.
    std::unique_ptr<RunningProgram> start(const std::string& name, const std::string& arguments) {
        environment.set("XDG_DATA_HOME", (folder.path / name).string());
        const std::filesystem::path session = folder.path / name / "session";
        std::filesystem::create_directories(session);
        std::filesystem::permissions(session, std::filesystem::perms::owner_all);
        environment.set("XDG_RUNTIME_DIR", session.string());
        return std::make_unique<RunningProgram>(
            "dxp " + arguments + " --hash 1 --port " + std::to_string(port), folder.path);
    }
    std::string match_arguments() const {
        return "match 127.0.0.1 --ballots starts.pdn --repeat 2 --initial 0.2 --increment 0.002 --json";
    }
    std::filesystem::path data(const std::string& name) const {
        return folder.path / name / "Quillorn/Tessarin International";
    }

    TemporaryFolder folder;
    ScratchEnvironment environment;
    int port = free_port();
};

struct FiledGame {
    std::string event, white, result;
    ReplayState first;
    bool replays = false;
};

std::vector<FiledGame> games_of(const std::string& text) {
    std::vector<FiledGame> games;
    PdnTable table;
    EXPECT_EQ(pdn_parse_games(text.c_str(), table), 0);
    for (const PdnGame& list : table) {
        if (!list) continue;
        GameHeaders headers;
        pdn_game_headers(list.get(), headers);
        FiledGame filed;
        filed.event = headers.event.data();
        filed.white = headers.white.data();
        filed.result = result_string(headers.result);
        int moves = 0, made = 0;
        for (const PdnNode* node = list.get(); node; node = node->next) moves += node->kind == PDN_MOVE;
        ReplayState state;
        PdnNode* node = pdn_start_position(list.get(), state);
        filed.first = state;
        while (node && made < moves) {
            const Position before = state.position;
            node = pdn_next_move(node, state);
            made += !same_pieces(before, state.position);
        }
        filed.replays = made == moves && moves > 0;
        games.push_back(filed);
    }
    return games;
}

// All games replay, and each start position came twice in a row with colours swapped.
void expect_match(const std::string& text, size_t games, const std::string& own_name) {
    const std::vector<FiledGame> filed = games_of(text);
    ASSERT_EQ(filed.size(), games);
    for (size_t i = 0; i < games; ++i) {
        EXPECT_TRUE(filed[i].replays) << filed[i].event;
        EXPECT_TRUE(filed[i].event.starts_with("Game " + std::to_string(i + 1))) << filed[i].event;
        EXPECT_TRUE(same_pieces(filed[i].first.position, filed[i / 2 * 2].first.position)) << i;
        EXPECT_EQ(filed[i].first.side, filed[i / 2 * 2].first.side);
    }
    EXPECT_FALSE(own_name.empty());
}

// What is behind the colon of a line of statistics: wins, losses, draws, unknowns.
std::vector<int> counters_of(const std::string& text) {
    std::vector<int> counters(4, -1);
    const size_t colon = text.find(':');
    if (colon != std::string::npos)
        std::sscanf(text.c_str() + colon + 1, "%d wins, %d losses, %d draws, %d unknowns", &counters[0],
                    &counters[1], &counters[2], &counters[3]);
    return counters;
}

int sum(const std::vector<int>& numbers) { return numbers[0] + numbers[1] + numbers[2] + numbers[3]; }

}  // namespace

TEST_F(CliDxp, TwoCopiesPlayAMatch) {
    const auto listener = start("follower", "listen");
    ASSERT_TRUE(listener->read_until("listening on port " + std::to_string(port)));
    const auto initiator = start("initiator", match_arguments());
    const ProgramResult ours = initiator->finish(), theirs = listener->finish();
    EXPECT_EQ(ours.status, 0) << ours.output << ours.errors;
    EXPECT_EQ(ours.errors, "");
    EXPECT_EQ(theirs.status, 0) << theirs.output << theirs.errors;
    EXPECT_NE(ours.output.find("game 8 of 8: "), std::string::npos) << ours.output;
    EXPECT_NE(theirs.output.find("8 games: "), std::string::npos) << theirs.output;

    const nlohmann::json summary = nlohmann::json::parse(last_line(ours.output));
    EXPECT_EQ(summary["games"], 8);
    EXPECT_EQ(summary["whole"], true);
    EXPECT_GT(summary["seconds"], 0.0);
    const std::string games = read_text(data("initiator") / "dxpgames.pdn");
    expect_match(games, 8, "Tessarin");
    EXPECT_NE(games.find("Game 3, opening start position 2"), std::string::npos);
    expect_match(read_text(data("follower") / "dxpgames.pdn"), 8, "Tessarin");
    // What the one has won the other has lost.
    const std::vector<int> a = counters_of(read_text(data("initiator") / "dxpstats.txt"));
    const std::vector<int> b = counters_of(read_text(data("follower") / "dxpstats.txt"));
    EXPECT_EQ(sum(a), 8);
    EXPECT_EQ(a, (std::vector<int>{b[1], b[0], b[2], b[3]}));
    EXPECT_EQ(summary["wins"], a[0]);
}

// Whenever it is ended, a match that is resumed has the games that it would have had.
TEST_F(CliDxp, AKilledMatchIsResumed) {
    const auto listener = start("follower", "listen -s");
    ASSERT_TRUE(listener->read_until("listening"));
    for (const int games : {2, 5}) {
        const auto initiator = start("initiator", match_arguments() + (games > 2 ? " --resume" : ""));
        ASSERT_TRUE(initiator->read_until("game " + std::to_string(games) + " of 8"));
        kill(initiator->child.pid, SIGKILL);
        initiator->finish();
        ASSERT_TRUE(listener->read_until("listening")) << "a server waits for the next";
    }
    const auto initiator = start("initiator", match_arguments() + " --resume");
    const ProgramResult result = initiator->finish();
    EXPECT_EQ(result.status, 0) << result.output << result.errors;
    EXPECT_EQ(nlohmann::json::parse(last_line(result.output))["games"], 8);
    expect_match(read_text(data("initiator") / "dxpgames.pdn"), 8, "Tessarin");
    EXPECT_EQ(sum(counters_of(read_text(data("initiator") / "dxpstats.txt"))), 8);
    ASSERT_TRUE(listener->read_until("listening"));
    listener->interrupt();
    const ProgramResult theirs = listener->finish();
    EXPECT_EQ(theirs.status, 0) << theirs.errors;
}

// Where there is nothing to go on with, nothing of what was played is lost.
TEST_F(CliDxp, AMatchThatCannotGoOnIsKept) {
    std::filesystem::create_directories(data("initiator"));
    struct Row {
        const char* stats;
        int status;
        const char* told;
    };
    const Row rows[] = {
        {"A vs B:  3 wins, 0 losses, 4 draws, 1 unknowns\n", 0, "all games of the match are played: "},
        {"A vs B:  3 wins, 0 losses, 149 draws, 1 unknowns\n", 1, "cannot go on: 153 games are played by "},
        {"A vs B:  3 wins, 0 lo", 1, "tells of no games, but "}};
    for (const Row& row : rows) {
        write_content(data("initiator") / "dxpstats.txt", row.stats);
        write_content(data("initiator") / "dxpgames.pdn", "what was played");
        const ProgramResult result = start("initiator", match_arguments() + " --resume")->finish();
        EXPECT_EQ(result.status, row.status) << row.stats;
        const std::string& told = row.status ? result.errors : result.output;
        EXPECT_NE(told.find(row.told), std::string::npos) << told;
        EXPECT_EQ(count_lines(told), 1) << told;
        EXPECT_EQ(read_text(data("initiator") / "dxpstats.txt"), row.stats);
        EXPECT_EQ(read_text(data("initiator") / "dxpgames.pdn"), "what was played");
    }
}

// The other side may go without a word behind the last game, which this side has claimed.
TEST_F(CliDxp, AMatchIsWholeWithItsLastGame) {
    std::filesystem::create_directories(data("initiator"));
    write_content(data("initiator") / "dxpstats.txt", "A vs B:  3 wins, 0 losses, 3 draws, 1 unknowns\n");
    Peer peer;
    ASSERT_EQ(peer_listen(peer, port), port);
    // Two positions in which the first move takes the last piece.
    folder.write("starts.pdn", "[FEN \"B:W22:B18\"] *\n[FEN \"B:W22:B18\"] *\n");
    const auto program = start("initiator", match_arguments() + " --resume");
    EXPECT_EQ(run_script(peer, {accepts(), hears("?01Tessarin*"), sends(game_acceptance_text("Peer", '0')),
                                hears("E*"), closes()}),
              "");
    const ProgramResult result = program->finish();
    EXPECT_EQ(result.status, 0) << result.errors;
    EXPECT_EQ(nlohmann::json::parse(last_line(result.output))["whole"], true) << result.output;
}

TEST_F(CliDxp, TheInterruptKeyEndsAMatchWithAllWritten) {
    const auto listener = start("follower", "listen");
    ASSERT_TRUE(listener->read_until("listening"));
    const auto initiator = start("initiator", match_arguments());
    ASSERT_TRUE(initiator->read_until("game 3 of 8"));
    initiator->interrupt();
    const ProgramResult ours = initiator->finish(), theirs = listener->finish();
    EXPECT_EQ(ours.status, 1) << "it is not whole";
    EXPECT_NE(ours.errors.find("--resume"), std::string::npos) << ours.errors;
    EXPECT_EQ(theirs.status, 0) << theirs.errors;
    const nlohmann::json summary = nlohmann::json::parse(last_line(ours.output));
    const int games = summary["games"];
    EXPECT_GE(games, 3);
    expect_match(read_text(data("initiator") / "dxpgames.pdn"), static_cast<size_t>(games), "Tessarin");
    EXPECT_EQ(sum(counters_of(read_text(data("initiator") / "dxpstats.txt"))), games);
}

// Who connects may also be the one that follows.
TEST_F(CliDxp, ConnectPlaysWhatItIsAskedFor) {
    Peer peer;
    ASSERT_EQ(peer_listen(peer, port), port);
    const auto program = start("follower", "connect 127.0.0.1 --verbose");
    ASSERT_TRUE(peer_accept(peer));
    PlayerOptions options;
    options.claim_at_ply = 6;
    options.claim = '1';
    PlayerReport report;
    initiate_game(peer, game_request_text("The \"Peer\"", 'Z', "0.1", "050"), options, report);
    EXPECT_EQ(peer.complaint, "");
    peer_close(peer);
    const ProgramResult result = program->finish();
    EXPECT_EQ(result.status, 0) << result.errors;
    EXPECT_NE(result.output.find("< R01The \"Peer\""), std::string::npos) << result.output;
    EXPECT_NE(result.output.find("> ATessarin"), std::string::npos);
    EXPECT_NE(result.output.find("game 1: The \"Peer\" - Tessarin"), std::string::npos) << result.output;
    EXPECT_NE(result.output.find(" 1.60b 0-2 in 3 moves"), std::string::npos) << result.output;
    EXPECT_NE(result.output.find("1 wins"), std::string::npos);
    EXPECT_NE(read_text(data("follower") / "dxpgames.pdn").find("[White \"The 'Peer'\"]"), std::string::npos);
}

TEST_F(CliDxp, WhatCameBeforeTheEndIsToldBeforeIt) {
    const auto program = start("follower", "listen --verbose");
    ASSERT_TRUE(program->read_until("listening"));
    std::vector<std::string> chats;
    for (int i = 10; i < 40; ++i) chats.push_back("Cline " + std::to_string(i));
    Peer peer;
    ASSERT_EQ(run_script(peer, {connects_to(port), sends_joined(chats), closes()}), "");
    const ProgramResult result = program->finish();
    EXPECT_EQ(result.status, 0) << result.errors;
    size_t at = 0;
    for (const std::string& chat : chats) {
        at = result.output.find("< " + chat, at);
        ASSERT_NE(at, std::string::npos) << chat << "\n" << result.output;
    }
    EXPECT_GT(result.output.find("connection ended"), at);
}

TEST_F(CliDxp, TheTimeThoughtIsThisSides) {
    Peer peer;
    ASSERT_EQ(peer_listen(peer, port), port);
    const auto program = start("follower", "connect 127.0.0.1 --json");
    ASSERT_TRUE(peer_accept(peer));
    PlayerOptions options;
    options.claim_at_ply = 2;
    options.before_send = [](Peer&, const PlayedGame& game) {
        if (game.plies == 0) std::this_thread::sleep_for(std::chrono::milliseconds(1500));
        return true;
    };
    PlayerReport report;
    initiate_game(peer, game_request_text("Slow", 'Z', "0.1", "050"), options, report);
    EXPECT_EQ(peer.complaint, "");
    peer_close(peer);
    const ProgramResult result = program->finish();
    ASSERT_EQ(result.status, 0) << result.errors;
    const nlohmann::json summary = nlohmann::json::parse(last_line(result.output));
    EXPECT_EQ(summary["played"], 1);
    // The other's second and a half are none of it.
    EXPECT_LT(summary["thought_seconds"], static_cast<double>(summary["seconds"]) - 0.7) << result.output;
}

TEST_F(CliDxp, AMatchThatBeginsAnewHasAScoreOfItsOwn) {
    const auto program = start("follower", "listen -s");
    for (const char claim : {'1', '0'}) {
        ASSERT_TRUE(program->read_until("listening"));
        // Without its file the match before cannot go on.
        std::filesystem::remove(data("follower") / "dxpstats.txt");
        Peer peer;
        ASSERT_TRUE(peer_connect(peer, port));
        PlayerOptions options;
        options.claim_at_ply = 0;
        options.claim = claim;
        PlayerReport report;
        initiate_game(peer, game_request_text("Peer", 'Z', "0.1", "050"), options, report);
        EXPECT_EQ(peer.complaint, "");
        peer_close(peer);
        ASSERT_TRUE(program->read_until("game 1: "));
    }
    program->interrupt();
    const ProgramResult result = program->finish();
    EXPECT_NE(result.output.find("score 100.0% (0 pairs)"), std::string::npos) << result.output;
    EXPECT_NE(result.output.find("score 50.0% (0 pairs)"), std::string::npos) << result.output;
}

// What a match asks for first, by its options.
TEST_F(CliDxp, OptionsReachTheFirstRequest) {
    const auto request_of = [&](const std::string& options) {
        Peer peer;
        EXPECT_EQ(peer_listen(peer, port), port);
        const auto program = start("one", "match 127.0.0.1 " + options);
        EXPECT_EQ(run_script(peer, {accepts(), hears("?01Tessarin*"),
                                    sends(game_acceptance_text("Proud", '1')), sees_end()}),
                  "");
        program->finish();
        return peer.heard.empty() ? "" : peer.heard.back();
    };
    const auto side_of = [](const std::string& request) {
        PlayedGame asked;
        EXPECT_TRUE(begin_requested_game(asked, request)) << request;
        return asked.position.side;
    };
    const std::string two = request_of("--ballots 2 --minutes 7 --moves 40"),
                      three = request_of("--ballots 3");
    EXPECT_EQ(two[0], 'R');
    EXPECT_NE(two.find("007040B"), std::string::npos) << two;
    EXPECT_NE(three.find("005075B"), std::string::npos) << three;
    EXPECT_EQ(side_of(two), WHITE);
    EXPECT_EQ(side_of(three), BLACK);
    const std::string whole_game = request_of("--initial 60");
    EXPECT_EQ(whole_game[0], 'F') << "also without an increment";
}

TEST_F(CliDxp, TellsWhatGoesWrong) {
    ProgramResult result = start("one", "match 127.0.0.1")->finish();
    EXPECT_EQ(result.status, 1);
    EXPECT_NE(result.errors.find("Cannot connect to remote host"), std::string::npos) << result.errors;
    EXPECT_EQ(count_lines(result.errors), 1) << "told once, though it is tried again: " << result.errors;
    result = start("one", "connect 'no such host'")->finish();
    EXPECT_EQ(result.status, 1);
    result = start("one", "match " + std::string(52, 'h'))->finish();
    EXPECT_EQ(result.status, 1);
    EXPECT_NE(result.errors.find("the name of the machine is too long"), std::string::npos) << result.errors;
    result = start("one", "match 127.0.0.1 --ballots " + std::string(130, 'a') + "/" + std::string(130, 'b'))
                 ->finish();
    EXPECT_EQ(result.status, 1);
    EXPECT_NE(result.errors.find(" is too long\n"), std::string::npos)
        << "a shorter name is another file " << result.errors;

    Peer peer;
    ASSERT_EQ(peer_listen(peer, port), port);
    result = start("one", "match 127.0.0.1 --ballots missing.pdn")->finish();
    EXPECT_EQ(result.status, 1);
    EXPECT_NE(result.errors.find("Error reading ballots file"), std::string::npos) << result.errors;

    for (const char* const arguments : {"match 127.0.0.1 --minutes x", "match", "listen --port 70000", "",
                                        "match h --initial 1 --minutes 2", "match h --increment 1"})
        EXPECT_EQ(run_program("dxp " + std::string(arguments), "", folder.path).status, 2) << arguments;
}

TEST_F(CliDxp, ARefusedGameEndsTheMatch) {
    Peer peer;
    ASSERT_EQ(peer_listen(peer, port), port);
    const auto program = start("one", "match 127.0.0.1");
    ASSERT_EQ(run_script(peer, {accepts(), hears("R01Tessarin*"), sends(game_acceptance_text("Proud", '1')),
                                sees_end()}),
              "");
    const ProgramResult result = program->finish();
    EXPECT_EQ(result.status, 1);
    EXPECT_NE(result.errors.find("Proud does not accept the game"), std::string::npos) << result.errors;
}

// From then on it follows, as long as the connection lasts; its own match is not whole.
TEST_F(CliDxp, APeerThatAsksInMidMatchIsFollowed) {
    Peer peer;
    ASSERT_EQ(peer_listen(peer, port), port);
    const auto program = start("one", "match 127.0.0.1");
    const PeerScript game = {sends(game_request_text("Peer", 'Z', "0.1", "050")), hears("ATessarin*"),
                             sends("E20"), hears("E00"), hears_nothing(200)};
    ASSERT_EQ(run_script(peer, {accepts(), hears("R01Tessarin*"), sends(game_acceptance_text("Peer"))}), "");
    ASSERT_EQ(run_script(peer, {waits_to_hear("M*")}), "");
    for (int i = 0; i < 2; ++i) ASSERT_EQ(run_script(peer, game), "");
    peer_close(peer);
    const ProgramResult result = program->finish();
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.errors.find("does not accept"), std::string::npos) << result.errors;
    EXPECT_NE(result.errors.find("the match was broken off"), std::string::npos) << result.errors;
    EXPECT_NE(result.output.find("game 2: Peer - Tessarin"), std::string::npos) << result.output;
}

TEST_F(CliDxp, APortThatIsTakenIsToldOnce) {
    Peer other;
    ASSERT_EQ(peer_listen(other, port), port);
    const auto program = start("one", "listen --verbose");
    ASSERT_TRUE(program->read_until("Cannot listen on port " + std::to_string(port)));
    std::this_thread::sleep_for(std::chrono::milliseconds(300));  // beyond the second try
    other.listener.close();
    Peer peer;
    ASSERT_EQ(run_script(peer, {connects_to(port), closes()}), "");
    const ProgramResult result = program->finish();
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.errors, "tessarin-cli: cannot listen on port " + std::to_string(port) + "\n");
}

// Before it asks for another game it leaves the other side time for what the last one takes.
TEST_F(CliDxp, ARequestComesAMomentBehindTheEndOfAGame) {
    Peer peer;
    ASSERT_EQ(peer_listen(peer, port), port);
    const auto program = start("one", "match 127.0.0.1");
    ASSERT_EQ(run_script(peer, {accepts(), hears("R01Tessarin*"), sends(game_acceptance_text("Peer"))}), "");
    const auto end = std::chrono::steady_clock::now();
    ASSERT_EQ(run_script(peer, {sends("E00"), waits_to_hear("R01Tessarin*")}), "");
    EXPECT_GE(std::chrono::steady_clock::now() - end, std::chrono::milliseconds(50));
    peer_close(peer);
    program->finish();
}

TEST_F(CliDxp, ALostConnectionEndsTheMatch) {
    Peer peer;
    ASSERT_EQ(peer_listen(peer, port), port);
    const auto program = start("one", "match 127.0.0.1");
    ASSERT_EQ(run_script(peer, {accepts(), hears("R01Tessarin*"), resets()}), "");
    const ProgramResult result = program->finish();
    EXPECT_EQ(result.status, 1);
    EXPECT_NE(result.output.find("connection ended"), std::string::npos) << result.output;
    EXPECT_NE(result.errors.find("broken off"), std::string::npos) << result.errors;
}
