// Every message as it is written and read, to the byte.
#include "dxp/messages.h"

#include <gtest/gtest.h>

#include <clocale>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <random>
#include <string>

#include "tests/base/scratch_folder.h"
#include "tests/dxp/scripted_peer.h"

namespace {

std::string formatted(const DxpMessage& message) {
    // A frame of bytes shows any write beyond the room that is promised.
    char text[DXP_TEXT_SIZE + 8];
    std::memset(text, '#', sizeof text);
    const size_t length = dxp_format_message(message, text);
    EXPECT_LT(length, DXP_TEXT_SIZE);
    EXPECT_EQ(text[length], '\0');
    for (size_t i = DXP_TEXT_SIZE; i < sizeof text; ++i) EXPECT_EQ(text[i], '#');
    return {text, length};
}

// Over a record full of other things, none of which may show.
DxpMessage parsed(const std::string& text) {
    DxpMessage message;
    std::memset(static_cast<void*>(&message), 0x55, sizeof message);
    dxp_parse_message(text, message);
    return message;
}

void set_name(char (&field)[DXP_NAME_LENGTH + 1], const std::string& name) {
    std::snprintf(field, sizeof field, "%s", name.c_str());
}

std::string squares_of(const DxpGameRequest& request) {
    return {request.squares.begin(), request.squares.end()};
}

DxpMessage request_of(const std::string& name, double minutes, int moves) {
    DxpMessage message;
    message.type = DXP_GAMEREQ;
    message.request.version = 1;
    set_name(message.request.name, name);
    message.request.follower_colour = 'Z';
    message.request.time = minutes;
    message.request.moves = static_cast<int16_t>(moves);
    message.request.to_move = 'W';
    std::copy(INITIAL_SQUARES.begin(), INITIAL_SQUARES.end(), message.request.squares.begin());
    return message;
}

std::string blanks(size_t count) { return std::string(count, ' '); }

std::string time_field(double minutes) { return formatted(request_of("x", minutes, 75)).substr(36, 3); }
std::string moves_field(int moves) { return formatted(request_of("x", 5, moves)).substr(39, 3); }

std::string six_wide(double number) {
    DxpMessage message = request_of("x", number, 0);
    message.type = DXP_GAMEREQ_FISCHER;
    message.request.increment = number;
    const std::string text = formatted(message);
    EXPECT_EQ(text.substr(36, 6), text.substr(42, 6));
    EXPECT_EQ(text.size(), 100u);
    return text.substr(36, 6);
}

double read_minutes(const std::string& field) {
    return parsed(game_request_text("x", 'W', field, "075")).request.time;
}

int read_moves(const std::string& field) {
    return parsed(game_request_text("x", 'W', "005", field)).request.moves;
}

double read_six_wide(const std::string& field) {
    const DxpMessage message = parsed(fischer_request_text("x", 'W', field, field));
    EXPECT_EQ(message.request.time, message.request.increment);
    return message.request.time;
}

DxpMessage move_of(int from, int to, int count) {
    DxpMessage message;
    message.type = DXP_MOVE;
    message.move.from = static_cast<int16_t>(from);
    message.move.to = static_cast<int16_t>(to);
    message.move.jumped_count = static_cast<int16_t>(count);
    for (int i = 0; i < count; ++i) message.move.jumped[static_cast<size_t>(i)] = static_cast<int16_t>(i + 1);
    return message;
}

DxpMessage end_of(int reason, int stop_code) {
    DxpMessage message;
    message.type = DXP_GAMEEND;
    message.game_end = {static_cast<int16_t>(reason), static_cast<int16_t>(stop_code)};
    return message;
}

DxpMessage chat_of(const std::string& text) {
    DxpMessage message;
    message.type = DXP_CHAT;
    std::snprintf(message.chat.text, sizeof message.chat.text, "%s", text.c_str());
    return message;
}

}  // namespace

TEST(DxpMessages, ARequestFillsItsFieldsToTheByte) {
    EXPECT_EQ(formatted(request_of("Tessarin", 120, 75)),
              "R01Tessarin                        Z120075BW" + std::string(INITIAL_SQUARES));
    EXPECT_EQ(formatted(request_of("Tessarin", 120, 75)).size(), 94u);
    DxpMessage initial = request_of("a", 5, 40);
    initial.request.to_move = 'A';
    initial.request.follower_colour = 'W';
    EXPECT_EQ(formatted(initial), "R01a" + blanks(31) + "W005040A");
}

TEST(DxpMessages, MinutesHaveADecimalOnlyWhereTheyNeedOne) {
    EXPECT_EQ(time_field(120), "120");
    EXPECT_EQ(time_field(0.5), "0.5");
    EXPECT_EQ(time_field(7.5), "7.5");
    EXPECT_EQ(time_field(5), "005");
    EXPECT_EQ(time_field(0), "000");
    EXPECT_EQ(time_field(5.009), "005");
    EXPECT_EQ(time_field(5.02), "5.0");
    EXPECT_EQ(time_field(999), "999");
    EXPECT_EQ(time_field(12.5), "12.") << "the moves stand where the digit behind the dot would";
    EXPECT_EQ(time_field(1200), "120");
    EXPECT_EQ(time_field(99.97), "100") << "of 100.0";
}

TEST(DxpMessages, MovesAndMinutesKeepTheirPlacesWhateverTheyAre) {
    EXPECT_EQ(moves_field(75), "075");
    EXPECT_EQ(moves_field(0), "000");
    EXPECT_EQ(moves_field(999), "999");
    EXPECT_EQ(moves_field(1234), "123");
    EXPECT_EQ(moves_field(-5), "-05");
    for (const double minutes : {-3.0, 1e300, -1e300, std::nan(""), HUGE_VAL, -HUGE_VAL, 1e-300, 3e9})
        EXPECT_EQ(formatted(request_of("x", minutes, 75)).substr(39, 5), "075BW") << minutes;
}

TEST(DxpMessages, ASixWideNumberFillsSixCharacters) {
    EXPECT_EQ(six_wide(300.5), "300.50");
    EXPECT_EQ(six_wide(0.5), "0.5000") << "0.50000 without its last digit";
    EXPECT_EQ(six_wide(2), "2.0000");
    EXPECT_EQ(six_wide(0), "0.0000");
    EXPECT_EQ(six_wide(1), "1.0000");
    EXPECT_EQ(six_wide(9.99994), "9.9999");
    EXPECT_EQ(six_wide(9.99999), "10.000") << "of 10.0000";
    EXPECT_EQ(six_wide(10), "10.000");
    EXPECT_EQ(six_wide(99.5), "99.500");
    EXPECT_EQ(six_wide(100), "100.00");
    EXPECT_EQ(six_wide(1000), "1000.0");
    EXPECT_EQ(six_wide(9999.94), "9999.9");
    EXPECT_EQ(six_wide(10000), " 10000");
    EXPECT_EQ(six_wide(123456), "123456");
    EXPECT_EQ(six_wide(1234567), "123456");
    EXPECT_EQ(six_wide(-2), "-2.000");
    for (const double number : {1e300, -1e300, std::nan(""), HUGE_VAL})
        EXPECT_EQ(six_wide(number).size(), 6u) << number;
}

TEST(DxpMessages, AFischerRequestFillsItsFieldsToTheByte) {
    DxpMessage message = request_of("Tessarin", 300.5, 0);
    message.type = DXP_GAMEREQ_FISCHER;
    message.request.increment = 2;
    const std::string head = "F01Tessarin" + blanks(24) + "Z300.502.0000";
    EXPECT_EQ(formatted(message), head + "BW" + std::string(INITIAL_SQUARES));
    message.request.to_move = 'A';
    EXPECT_EQ(formatted(message), head + "A");
}

TEST(DxpMessages, NamesFillTheirFieldWithoutASeparator) {
    for (const size_t length : {0u, 1u, 31u, 32u}) {
        const std::string name(length, 'n');
        const std::string text = formatted(request_of(name, 5, 75));
        EXPECT_EQ(text.substr(3, 33), name + blanks(32 - length) + "Z");
        EXPECT_STREQ(parsed(text).request.name, name.c_str());
        DxpMessage acceptance;
        acceptance.type = DXP_GAMEACC;
        set_name(acceptance.acceptance.name, name);
        EXPECT_EQ(formatted(acceptance), "A" + name + blanks(32 - length) + "0");
        EXPECT_STREQ(parsed(formatted(acceptance)).acceptance.name, name.c_str());
    }
}

TEST(DxpMessages, BlanksBehindANameAreNotPartOfIt) {
    EXPECT_STREQ(parsed(game_request_text("two  words   ", 'W', "005", "075")).request.name, "two  words");
    EXPECT_STREQ(parsed(game_request_text("  ahead", 'W', "005", "075")).request.name, "  ahead");
    EXPECT_STREQ(parsed(game_acceptance_text("two  words   ")).acceptance.name, "two  words");
    EXPECT_STREQ(parsed(game_acceptance_text("")).acceptance.name, "");
}

TEST(DxpMessages, ARequestIsRead) {
    const std::string squares = "zzWWe" + std::string(40, 'e') + "wwZZe";
    const DxpMessage message = parsed(game_request_text("Peer", 'Z', "7.5", "090", "BZ" + squares));
    EXPECT_EQ(message.type, DXP_GAMEREQ);
    EXPECT_EQ(message.request.version, 1);
    EXPECT_STREQ(message.request.name, "Peer");
    EXPECT_EQ(message.request.follower_colour, 'Z');
    EXPECT_EQ(message.request.time, 7.5);
    EXPECT_EQ(message.request.moves, 90);
    EXPECT_EQ(message.request.to_move, 'Z');
    EXPECT_EQ(squares_of(message.request), squares);
    EXPECT_EQ(message.request.increment, 0);
}

TEST(DxpMessages, TheInitialPositionHasNoSquares) {
    const DxpMessage message = parsed(game_request_text("Peer", 'W', "120", "075"));
    EXPECT_EQ(message.request.to_move, 'A');
    EXPECT_EQ(squares_of(message.request), std::string(50, '\0'));
    const DxpMessage fischer = parsed(fischer_request_text("Peer", 'W', "300.50", "2.0000"));
    EXPECT_EQ(fischer.type, DXP_GAMEREQ_FISCHER);
    EXPECT_EQ(fischer.request.to_move, 'A');
    EXPECT_EQ(fischer.request.time, 300.5);
    EXPECT_EQ(fischer.request.increment, 2.0);
}

TEST(DxpMessages, AFischerPositionIsRead) {
    const DxpMessage message =
        parsed(fischer_request_text("Peer", 'W', "300.50", "2.0000", "BW" + std::string(INITIAL_SQUARES)));
    EXPECT_EQ(message.request.to_move, 'W');
    EXPECT_EQ(squares_of(message.request), INITIAL_SQUARES);
    EXPECT_EQ(message.request.moves, 0);
}

TEST(DxpMessages, TimesOfThreeCharactersAreRead) {
    EXPECT_EQ(read_minutes("120"), 120);
    EXPECT_EQ(read_minutes("12."), 12);
    EXPECT_EQ(read_minutes("0.5"), 0.5);
    EXPECT_EQ(read_minutes(".25"), 0.25);
    EXPECT_EQ(read_minutes("  5"), 5);
    EXPECT_EQ(read_minutes("5  "), 5);
    EXPECT_EQ(read_minutes("+5 "), 5);
    EXPECT_EQ(read_minutes("-5 "), -5);
    EXPECT_EQ(read_minutes("   "), 0) << "and nothing of the field behind";
    EXPECT_EQ(read_minutes("abc"), 0);
    EXPECT_EQ(read_minutes("nan"), 0);
    EXPECT_EQ(read_minutes("inf"), 0);
    EXPECT_EQ(read_minutes("9e9"), 9e9);
    EXPECT_EQ(read_moves("075"), 75);
    EXPECT_EQ(read_moves(" 75"), 75);
    EXPECT_EQ(read_moves("75 "), 75);
    EXPECT_EQ(read_moves("-12"), -12);
    EXPECT_EQ(read_moves("   "), 0);
    EXPECT_EQ(read_moves("x75"), 0);
}

TEST(DxpMessages, NumbersOfSixCharactersAreRead) {
    EXPECT_EQ(read_six_wide("300.50"), 300.5);
    EXPECT_EQ(read_six_wide("0.5000"), 0.5);
    EXPECT_EQ(read_six_wide(" 10000"), 10000);
    EXPECT_EQ(read_six_wide("     1"), 1);
    EXPECT_EQ(read_six_wide("      "), 0);
    EXPECT_EQ(read_six_wide("1e5   "), 1e5);
    EXPECT_EQ(read_six_wide("1e999 "), 0) << "no number that can be held";
}

TEST(DxpMessages, AVersionMayRunOnIntoTheName) {
    EXPECT_EQ(parsed("R01" + std::string("9lives")).request.version, 19);
    EXPECT_EQ(parsed("R01" + std::string(32, '9') + "W120075A").request.version,
              std::numeric_limits<int16_t>::max());
    EXPECT_STREQ(parsed("R01" + std::string(32, '9') + "W120075A").request.name,
                 std::string(32, '9').c_str());
}

TEST(DxpMessages, AnAcceptanceIsRead) {
    EXPECT_EQ(parsed(game_acceptance_text("Peer")).type, DXP_GAMEACC);
    EXPECT_EQ(parsed(game_acceptance_text("Peer")).acceptance.code, 0);
    EXPECT_EQ(parsed(game_acceptance_text("Peer", '1')).acceptance.code, 1);
    EXPECT_EQ(parsed(game_acceptance_text("Peer", '1') + "2").acceptance.code, 12);
    EXPECT_EQ(parsed(game_acceptance_text("Peer", 'x')).acceptance.code, 0);
}

TEST(DxpMessages, AMoveIsWritten) {
    EXPECT_EQ(formatted(move_of(32, 28, 0)), "M0000322800");
    EXPECT_EQ(formatted(move_of(1, 5, 2)), "M00000105020102");
    const std::string twelve = formatted(move_of(28, 17, 12));
    EXPECT_EQ(twelve, "M0000281712" + std::string("010203040506070809101112"));
    EXPECT_EQ(twelve.size(), 35u);
    EXPECT_LT(formatted(move_of(28, 17, 99)).size(), DXP_MAX_TEXT + 1) << "what can be sent can be taken";
    DxpMessage wild = move_of(-30000, 30000, -1);
    wild.move.time = 12345;
    EXPECT_EQ(formatted(wild), "M1234-33000");
}

TEST(DxpMessages, AMoveIsRead) {
    const DxpMessage message = parsed("M123428170322" + std::string("1809"));
    EXPECT_EQ(message.type, DXP_MOVE);
    EXPECT_EQ(message.move.time, 1234);
    EXPECT_EQ(message.move.from, 28);
    EXPECT_EQ(message.move.to, 17);
    EXPECT_EQ(message.move.jumped_count, 3);
    EXPECT_EQ(message.move.jumped[0], 22);
    EXPECT_EQ(message.move.jumped[1], 18);
    EXPECT_EQ(message.move.jumped[2], 9);
    EXPECT_EQ(message.move.jumped[3], 0);
}

TEST(DxpMessages, SquaresThatATextDoesNotHoldAreNone) {
    const DxpMessage message = parsed("M00002817992");
    EXPECT_EQ(message.move.jumped_count, 99);
    EXPECT_EQ(message.move.jumped[0], 2);
    for (size_t i = 1; i < DXP_MAX_JUMPED; ++i) EXPECT_EQ(message.move.jumped[i], 0);
    const DxpMessage full = parsed("M0000281799" + std::string(121, '4'));
    EXPECT_EQ(full.move.jumped[59], 44);
    EXPECT_EQ(full.move.jumped[60], 4);
    EXPECT_EQ(full.move.jumped[61], 0);
    EXPECT_EQ(parsed("M00002817-5").move.jumped_count, -5);
}

TEST(DxpMessages, AnEndIsWrittenAndRead) {
    EXPECT_EQ(formatted(end_of(0, 0)), "E00");
    EXPECT_EQ(formatted(end_of(3, 0)), "E30");
    EXPECT_EQ(formatted(end_of(3, 9)), "E39");
    EXPECT_EQ(formatted(end_of(12, 34)), "E13") << "a digit each";
    EXPECT_EQ(parsed("E30").type, DXP_GAMEEND);
    EXPECT_EQ(parsed("E30").game_end.reason, 3);
    EXPECT_EQ(parsed("E30").game_end.stop_code, 0);
    EXPECT_EQ(parsed("E03").game_end.reason, 0);
    EXPECT_EQ(parsed("E03").game_end.stop_code, 3);
    EXPECT_EQ(parsed("E 1").game_end.reason, ' ' - '0');
}

TEST(DxpMessages, ReasonsBeyondThoseThatAreKnownSayNothing) {
    EXPECT_EQ(game_end_reason(0), DXP_REASON_UNKNOWN);
    EXPECT_EQ(game_end_reason(1), DXP_REASON_SENDER_LOSES);
    EXPECT_EQ(game_end_reason(2), DXP_REASON_DRAW);
    EXPECT_EQ(game_end_reason(3), DXP_REASON_SENDER_WINS);
    for (const int reason : {4, 9, 17, -1, -48, 32767}) {
        EXPECT_EQ(game_end_reason(static_cast<int16_t>(reason)), DXP_REASON_UNKNOWN) << reason;
    }
}

TEST(DxpMessages, ChatIsWrittenAndRead) {
    EXPECT_EQ(formatted(chat_of("")), "C");
    EXPECT_EQ(formatted(chat_of("hello, you")), "Chello, you");
    const std::string longest(126, 'c');
    EXPECT_EQ(formatted(chat_of(longest)), "C" + longest);
    EXPECT_EQ(parsed("C").type, DXP_CHAT);
    EXPECT_STREQ(parsed("C").chat.text, "");
    EXPECT_STREQ(parsed("C" + longest).chat.text, longest.c_str());
    EXPECT_STREQ(parsed("C" + longest + "more!").chat.text, longest.c_str());
}

TEST(DxpMessages, TakeBackRequestsAreRead) {
    const DxpMessage message = parsed("B012Z");
    EXPECT_EQ(message.type, DXP_BACKREQ);
    EXPECT_EQ(message.back_request.move_number, 12);
    EXPECT_EQ(message.back_request.colour, 'Z');
    EXPECT_EQ(parsed("B999W").back_request.move_number, 999);
    EXPECT_EQ(parsed("B-01W").back_request.move_number, -1);
    EXPECT_EQ(parsed("BxyzW").back_request.move_number, 0);
    EXPECT_EQ(parsed("BxyzW").back_request.colour, 'W');
    DxpMessage sent;
    sent.type = DXP_BACKREQ;
    sent.back_request = {3, 'W'};
    EXPECT_EQ(formatted(sent), "K3") << "none is ever sent";
}

TEST(DxpMessages, TakeBackAnswersAreWrittenAndRead) {
    DxpMessage message;
    message.type = DXP_BACKACC;
    EXPECT_EQ(formatted(message), "K0");
    message.back_acceptance.code = 2;
    EXPECT_EQ(formatted(message), "K2");
    EXPECT_EQ(parsed("K0").type, DXP_BACKACC);
    EXPECT_EQ(parsed("K2").back_acceptance.code, 2);
    EXPECT_EQ(parsed("K").back_acceptance.code, 0);
}

TEST(DxpMessages, UnknownLettersLeaveTheRecordAsItIs) {
    for (int letter = 0; letter < 256; ++letter) {
        const char c = static_cast<char>(letter);
        const bool known = letter != 0 && std::strchr("RAMECBKF", letter);
        EXPECT_EQ(dxp_type_of_letter(c) != DXP_NO_MESSAGE, known) << letter;
        if (known) continue;
        DxpMessage message = request_of("kept", 1, 2);
        dxp_parse_message(std::string(1, c) + "30", message);
        EXPECT_EQ(message.type, DXP_GAMEREQ);
        EXPECT_STREQ(message.request.name, "kept");
    }
    DxpMessage message = request_of("kept", 1, 2);
    dxp_parse_message("", message);
    EXPECT_STREQ(message.request.name, "kept");
}

TEST(DxpMessages, WhatHasNoTextIsEmpty) {
    DxpMessage message;
    for (const int32_t type : {0, -1, 9, 99, 100, 101}) {
        message.type = type;
        EXPECT_EQ(formatted(message), "") << type;
    }
}

// Of every message cut off anywhere, the fields in front are read and those behind are clear.
TEST(DxpMessages, CutTextsLeaveTheirMissingFieldsClear) {
    const std::string request = game_request_text("Somebody", 'W', "120", "075", "BZ" + std::string(50, 'w'));
    for (size_t length = 1; length <= request.size(); ++length) {
        const DxpGameRequest read = parsed(request.substr(0, length)).request;
        EXPECT_EQ(read.follower_colour, length > 35 ? 'W' : '\0');
        EXPECT_EQ(read.time, length > 38 ? 120 : length == 38 ? 12 : length == 37 ? 1 : 0);
        EXPECT_EQ(read.moves, length > 41 ? 75 : length == 41 ? 7 : 0);
        EXPECT_EQ(read.to_move, length > 43 ? 'Z' : '\0');
        for (size_t i = 0; i < SQUARES; ++i) EXPECT_EQ(read.squares[i], length > 44 + i ? 'w' : '\0');
        EXPECT_EQ(std::string(read.name), std::string("Somebody").substr(0, length > 3 ? length - 3 : 0));
    }
    const DxpMessage move = parsed("M0000");
    EXPECT_EQ(move.move.from, 0);
    EXPECT_EQ(move.move.jumped_count, 0);
    EXPECT_EQ(parsed("M000031").move.from, 31);
    EXPECT_EQ(parsed("M000031").move.to, 0);
    EXPECT_EQ(parsed("E").game_end.reason, 0);
    EXPECT_EQ(parsed("E").game_end.stop_code, 0);
    EXPECT_EQ(parsed("E2").game_end.reason, 2);
    EXPECT_EQ(parsed("E2").game_end.stop_code, 0);
    EXPECT_EQ(parsed("A").acceptance.code, 0);
    EXPECT_STREQ(parsed("A").acceptance.name, "");
    EXPECT_EQ(parsed("B1").back_request.colour, '\0');
    EXPECT_EQ(parsed("F").request.time, 0);
}

// A user's locale may have a comma for the decimal point; the wire has not.
TEST(DxpMessages, TheLocalePlaysNoPart) {
    const ScratchFolder folder;
    std::ofstream(folder.file("source"))
        << "LC_NUMERIC\ndecimal_point \",\"\nthousands_sep \"\"\ngrouping -1\nEND LC_NUMERIC\n";
    // Its other categories are missing, of which it warns.
    const std::string command =
        "cd '" + folder.path + "' && localedef -c -i source -f ANSI_X3.4-1968 ./comma >log 2>&1 || true";
    ASSERT_EQ(std::system(command.c_str()), 0);
    setenv("LOCPATH", folder.path.c_str(), 1);
    if (!std::setlocale(LC_NUMERIC, "comma")) GTEST_SKIP() << "no locale can be made";
    EXPECT_STREQ(std::localeconv()->decimal_point, ",");
    EXPECT_EQ(time_field(7.5), "7.5");
    EXPECT_EQ(six_wide(300.5), "300.50");
    EXPECT_EQ(read_minutes("7.5"), 7.5);
    std::setlocale(LC_NUMERIC, "C");
    unsetenv("LOCPATH");
}

TEST(DxpMessages, WhatIsWrittenIsReadBack) {
    std::mt19937 random(1);
    const auto below = [&](int bound) { return static_cast<int>(random() % static_cast<unsigned>(bound)); };
    for (int i = 0; i < 20000; ++i) {
        DxpMessage message =
            request_of(std::string(static_cast<size_t>(below(33)), 'a'), below(1000), below(1000));
        message.request.follower_colour = below(2) ? 'W' : 'Z';
        message.request.to_move = "AWZ"[below(3)];
        for (char& square : message.request.squares) square = "ewzWZ"[below(5)];
        if (below(2)) {
            message.type = DXP_GAMEREQ_FISCHER;
            message.request.time = below(1000000);
            message.request.increment = below(1000) / 8.0;
        }
        const DxpMessage back = parsed(formatted(message));
        ASSERT_EQ(back.type, message.type);
        ASSERT_STREQ(back.request.name, message.request.name);
        ASSERT_EQ(back.request.follower_colour, message.request.follower_colour);
        ASSERT_EQ(back.request.time, message.request.time);
        ASSERT_EQ(back.request.to_move, message.request.to_move);
        if (message.type == DXP_GAMEREQ) {
            ASSERT_EQ(back.request.moves, message.request.moves);
        } else {
            ASSERT_NEAR(back.request.increment, message.request.increment, 0.005);
        }
        if (message.request.to_move != 'A') {
            ASSERT_EQ(squares_of(back.request), squares_of(message.request));
        }

        const DxpMessage move = move_of(1 + below(50), 1 + below(50), below(20));
        const DxpMessage move_back = parsed(formatted(move));
        ASSERT_EQ(move_back.move.from, move.move.from);
        ASSERT_EQ(move_back.move.to, move.move.to);
        ASSERT_EQ(move_back.move.jumped_count, move.move.jumped_count);
        ASSERT_EQ(move_back.move.jumped, move.move.jumped);
    }
}
