#include "records/pdn_token.h"

#include <gtest/gtest.h>

#include <ctime>
#include <random>
#include <string>

#include "slow_tokenizer.h"

namespace {

std::string text_of(const std::unique_ptr<char[]>& text) { return text ? text.get() : "-"; }

std::string squares_of(const PdnToken& token) {
    if (!token.path) return "";
    std::string squares = " path";
    for (int i = 1; i <= token.path[0]; ++i)
        squares += " " + std::to_string(token.path[static_cast<size_t>(i)]);
    return squares;
}

std::string describe(PdnTokenKind kind, const PdnToken& token) {
    switch (kind) {
        case PDN_HEADER:
            return "header '" + text_of(token.key) + "' " + text_of(token.value);
        case PDN_COMMENT:
            return "comment '" + text_of(token.text) + "'";
        case PDN_MOVE_NUMBER:
            return "number";
        case PDN_DRAW:
            return "draw";
        case PDN_UNKNOWN:
            return "unknown";
        case PDN_BLACK_WIN:
            return "black";
        case PDN_WHITE_WIN:
            return "white";
        case PDN_MOVE:
            return "move " + std::to_string(token.from) + (token.is_capture ? "x" : "-") +
                   std::to_string(token.to) + squares_of(token);
        case PDN_EMBEDDED_FEN:
            return "fen '" + text_of(token.text) + "'";
        default:
            return "end";
    }
}

// All tokens of the text, one a line.
std::string tokens(const std::string& text) {
    std::string all;
    const char* at = text.c_str();
    for (;;) {
        PdnToken token;
        const PdnTokenKind kind = pdn_next_token(at, token, true);
        if (kind == PDN_END) return all;
        all += describe(kind, token) + "\n";
    }
}

// What stands behind the first token.
std::string rest(const std::string& text) {
    const char* at = text.c_str();
    PdnToken token;
    pdn_next_token(at, token, true);
    return at;
}

// A comment with that many openers, one in another.
std::string nested(int levels) {
    std::string text;
    for (int i = 0; i < levels; ++i) text += i % 2 ? "(" : "{";
    for (int i = levels - 1; i >= 0; --i) text += i % 2 ? ")" : "}";
    return text;
}

TEST(PdnToken, NumbersOfTheKinds) {
    EXPECT_EQ(PDN_HEADER, 0);
    EXPECT_EQ(PDN_COMMENT, 1);
    EXPECT_EQ(PDN_MOVE_NUMBER, 2);
    EXPECT_EQ(PDN_DRAW, 3);
    EXPECT_EQ(PDN_UNKNOWN, 4);
    EXPECT_EQ(PDN_BLACK_WIN, 5);
    EXPECT_EQ(PDN_WHITE_WIN, 6);
    EXPECT_EQ(PDN_MOVE, 7);
    EXPECT_EQ(PDN_END, 8);
    EXPECT_EQ(PDN_EMBEDDED_FEN, 9);
}

TEST(PdnToken, EndOfTextKeepsTheCursor) {
    for (const char* text : {"", " \t\r\n"}) {
        const char* at = text;
        PdnToken token;
        EXPECT_EQ(pdn_next_token(at, token, true), PDN_END);
        EXPECT_EQ(*at, '\0');
        const char* const end = at;
        EXPECT_EQ(pdn_next_token(at, token, true), PDN_END);
        EXPECT_EQ(at, end);
    }
}

TEST(PdnToken, Headers) {
    EXPECT_EQ(tokens("[Event \"A game\"]"), "header 'Event' \"A game\"\n");
    EXPECT_EQ(tokens("[ \n Event \t\r\n \"\" \n ]*"), "header 'Event' \"\"\nunknown\n");
    EXPECT_EQ(tokens("[Two words \"v\"  and more ]"), "header 'Two words' \"v\"\n");
    EXPECT_EQ(tokens("[Event\"[a] {b} (c) 1. * /FEN\"]"), "header 'Event' \"[a] {b} (c) 1. * /FEN\"\n");
    EXPECT_EQ(tokens("[ \"v\"]\"w\"]"), "header '\"v' \"]\"\n")
        << "the key's first character is not looked at";
    EXPECT_EQ(rest("[a \"b\"]c"), "c");
    EXPECT_EQ(tokens("[a]\n[Date \"2000\"]"), "header 'a]\n[Date' \"2000\"\n") << "runs on to the next quote";
}

TEST(PdnToken, TextThatEndsInsideATag) {
    for (const char* text :
         {"[", "[Event", "[Event \"", "[Event \"a", "[Event \"a\"", "[Event \"a\" b {c} 1. *"})
        EXPECT_EQ(tokens(std::string(text) + " \n"), "comment '" + std::string(text) + "'\n");
}

TEST(PdnToken, Comments) {
    EXPECT_EQ(tokens("{ a } b"), "comment '{ a }'\ncomment 'b'\n");
    EXPECT_EQ(tokens("(a)(b)"), "comment '(a)'\ncomment '(b)'\n");
    EXPECT_EQ(tokens("{ a ( b } c ) d }"), "comment '{ a ( b } c ) d }'\n");
    EXPECT_EQ(tokens("{ a ) b }*"), "comment '{ a ) b }'\nunknown\n");
    EXPECT_EQ(tokens("({)}) 5."), "comment '({)})'\nnumber\n");
    EXPECT_EQ(tokens("{[a \"b\"] 1. 32-28 * /FEN \"W\"/}"), "comment '{[a \"b\"] 1. 32-28 * /FEN \"W\"/}'\n");
    EXPECT_EQ(tokens("{ a ( b } 1. 32-28 \n\n"), "comment '{ a ( b } 1. 32-28'\n") << "never closed";
}

TEST(PdnToken, CommentsNestFiftyDeep) {
    for (const int levels : {1, 2, 49, 50})
        EXPECT_EQ(tokens(nested(levels) + "*"), "comment '" + nested(levels) + "'\nunknown\n") << levels;
    // The opener of level 51 is only text, and its closer is none to level 50, which is of the other kind.
    EXPECT_EQ(tokens(nested(51) + "*"), "comment '" + nested(51) + "'\nunknown\n");
    const std::string braces = std::string(60, '{') + std::string(50, '}');
    EXPECT_EQ(tokens(braces + "}*"), "comment '" + braces + "'\ncomment '}'\nunknown\n");
}

TEST(PdnToken, MoveNumbersAndDots) {
    EXPECT_EQ(tokens("1."), "number\n");
    EXPECT_EQ(tokens("1234567890."), "number\n");
    EXPECT_EQ(tokens("1... 32-28"), "number\ncomment '.. '\nmove 32-28\n");
    EXPECT_EQ(tokens("1 ."), "comment '1 .'\n");
    EXPECT_EQ(tokens("1.32-28"), "number\nmove 32-28\n");
}

TEST(PdnToken, TextThatEndsBehindANumber) {
    EXPECT_EQ(tokens("12"), "comment '12'\n");
    EXPECT_EQ(tokens("12 \n"), "comment '12'\n");
    EXPECT_EQ(tokens("12-"), "comment '12-'\n");
    EXPECT_EQ(tokens("12 x \n"), "comment '12 x'\n");
}

TEST(PdnToken, NumbersThatAreNoMoves) {
    EXPECT_EQ(tokens("12a 34-30"), "comment '12a '\nmove 34-30\n");
    EXPECT_EQ(tokens("12 13-18"), "comment '12 '\nmove 13-18\n");
    EXPECT_EQ(tokens("12-a34"), "comment '12-a'\ncomment '34'\n");
    EXPECT_EQ(tokens("12--34"), "comment '12--'\ncomment '34'\n");
    EXPECT_EQ(tokens("12:34"), "comment '12:'\ncomment '34'\n");
    EXPECT_EQ(tokens("12*"), "comment '12'\nunknown\n");
    EXPECT_EQ(tokens("12-{a}"), "comment '12-'\ncomment '{a}'\n");
    EXPECT_EQ(tokens("12/34"), "comment '12/'\ncomment '34'\n");
    EXPECT_EQ(tokens("12/FEN \"W\"/"), "comment '12'\nfen 'W'\n");
}

TEST(PdnToken, Moves) {
    EXPECT_EQ(tokens("32-28"), "move 32-28\n");
    EXPECT_EQ(tokens("32 x\t28"), "move 32x28\n");
    EXPECT_EQ(tokens("32X28"), "move 32x28\n");
    EXPECT_EQ(tokens("032-0028"), "move 32-28\n");
    EXPECT_EQ(tokens("256-289"), "move 0-33\n") << "squares are read modulo 256";
    EXPECT_EQ(tokens("99999999999999999999999-1000"), "move 255-232\n");
    EXPECT_EQ(tokens("32-28!"), "move 32-28\ncomment '!'\n");
    EXPECT_EQ(tokens("32-28{a}"), "move 32-28\ncomment '{a}'\n");
    EXPECT_EQ(tokens("32-28 19-23"), "move 32-28\nmove 19-23\n");
}

TEST(PdnToken, Paths) {
    EXPECT_EQ(tokens("12x23x34"), "move 12x34 path 12 23 34\n");
    EXPECT_EQ(tokens("12 x 23 x 34"), "move 12x34 path 12 23 34\n");
    EXPECT_EQ(tokens("12-23x34"), "move 12-34 path 12 23 34\n") << "the first separator tells";
    EXPECT_EQ(tokens("12x23-34-45"), "move 12x45 path 12 23 34 45\n");
    EXPECT_EQ(tokens("12x23\nx\n34 *"), "move 12x34 path 12 23 34\nunknown\n");
}

TEST(PdnToken, ASeparatorBehindAMoveIsGivenBack) {
    EXPECT_EQ(tokens("12-34- word 5."), "move 12-34\ncomment '- word '\nnumber\n");
    EXPECT_EQ(rest("12-34- word"), "- word");
    EXPECT_EQ(rest("12-34 x word"), " x word");
    EXPECT_EQ(rest("12-34 word"), " word");
    EXPECT_EQ(rest("12x23x34  -  -"), "  -  -") << "the place is that of the last square";
    EXPECT_EQ(rest("12-34 \n"), " \n");
    EXPECT_EQ(rest("12-34-"), "-");
    EXPECT_EQ(rest("12-34 - "), " - ");
    EXPECT_EQ(rest("12-34"), "");
    EXPECT_EQ(rest("12-34,"), ",");
}

TEST(PdnToken, TextThatEndsInsideAMove) {
    for (const char* text : {"12x23x34", "12x23x34 ", "12x23x34 x ", "12x23x34x"})
        EXPECT_EQ(tokens(text).substr(0, 25), "move 12x34 path 12 23 34\n") << text;
    EXPECT_EQ(tokens("1-0"), "white\n");
    EXPECT_EQ(tokens("1-0-"), "white\ncomment '-'\n");
}

TEST(PdnToken, ALongPathIsCut) {
    std::string text = "1";
    std::string squares = " path 1";
    for (int square = 2; square <= 400; ++square) {
        text += "x" + std::to_string(square);
        if (square <= MAX_PATH_SQUARES) squares += " " + std::to_string(square);
    }
    EXPECT_EQ(tokens(text), "move 1x" + std::to_string(400 % 256) + squares + "\n");
}

TEST(PdnToken, Results) {
    EXPECT_EQ(tokens("1-0 2-0 0-1 0-2 1/2-1/2 *"), "white\nwhite\nblack\nblack\ndraw\nunknown\n");
    EXPECT_EQ(tokens("2 X 0"), "white\n");
    EXPECT_EQ(tokens("1-1"), "move 1-1\n") << "not a result to this reader";
    EXPECT_EQ(tokens("0-0 3-0 0-3"), "move 0-0\nmove 3-0\nmove 0-3\n");
    EXPECT_EQ(tokens("0-5-1"), "black\n") << "the first and the last number tell";
    EXPECT_EQ(tokens("256-257"), "black\n");
    EXPECT_EQ(tokens("11/2-1/2"), "draw\n");
    EXPECT_EQ(tokens("1/2-1/21."), "draw\nnumber\n");
    EXPECT_EQ(tokens("1/2-1/"), "comment '1/'\nmove 2-1\ncomment '/'\n");
    EXPECT_EQ(tokens("1 /2-1/2"), "comment '1 /'\nmove 2-1\ncomment '/'\ncomment '2'\n");
}

TEST(PdnToken, Junk) {
    EXPECT_EQ(tokens("good move \n 5."), "comment 'good move \n '\nnumber\n") << "not trimmed before a token";
    EXPECT_EQ(tokens("good move \n "), "comment 'good move'\n") << "trimmed at the end of the text";
    for (const char* stop : {"(a)", "[a \"b\"]", "{a}", "*", "7", "/FEN \"B\"/"})
        EXPECT_EQ(tokens("a/]})-" + std::string(stop)), "comment 'a/]})-'\n" + tokens(stop)) << stop;
    EXPECT_EQ(tokens("x32-28"), "comment 'x'\nmove 32-28\n");
    EXPECT_EQ(tokens("\v"), "comment '\v'\n") << "white space is four characters and no more";
    EXPECT_EQ(tokens("\x80\xff 1."), "comment '\x80\xff '\nnumber\n");
}

TEST(PdnToken, EmbeddedFen) {
    EXPECT_EQ(tokens("/FEN \"W:W31:B1\"/ 31-27"), "fen 'W:W31:B1'\nmove 31-27\n");
    EXPECT_EQ(tokens("/FEN\"B\"/"), "fen 'B'\n");
    EXPECT_EQ(tokens("/FEN anything \" b:\" anything/*"), "fen ' b:'\nunknown\n");
    EXPECT_EQ(tokens("/fen \"B\"/"), "comment '/fen \"B\"/'\n");
    EXPECT_EQ(tokens("/FEN \"X\"/"), "comment '/FEN \"X\"/'\n");
    EXPECT_EQ(tokens("/FEN \"W:W:B\""), "comment '/FEN \"W:W:B\"'\n") << "no slash";
    EXPECT_EQ(tokens("/FEN \"W:B/"), "comment '/FEN \"W:B/'\n") << "no closing quote";
    EXPECT_EQ(tokens("/FEN W:W:B/"), "comment '/FEN W:W:B/'\n") << "no quote";
    EXPECT_EQ(tokens("/FEN \"W:W31:B1\" 5."),
              "comment '/FEN \"W:W'\ncomment '31:B'\ncomment '1\" '\nnumber\n");
    EXPECT_EQ(tokens("/FEN"), "comment '/FEN'\n");
    EXPECT_EQ(tokens("/FEN/FEN \"W\"/"), "fen 'W'\n") << "the first quote belongs to the first of them";
}

TEST(PdnToken, EmbeddedFenReachesTwoHundredCharacters) {
    const auto text = [](size_t before_quote, size_t inside, size_t before_slash) {
        return "/FEN" + std::string(before_quote - 4, ' ') + "\"W" + std::string(inside - 1, ',') + "\"" +
               std::string(before_slash, ' ') + "/*";
    };
    EXPECT_EQ(tokens(text(200, 198, 0)), "fen 'W" + std::string(197, ',') + "'\nunknown\n");
    EXPECT_EQ(tokens(text(200, 1, 197)), "fen 'W'\nunknown\n");
    EXPECT_EQ(tokens(text(201, 10, 0)).substr(0, 13), "comment '/FEN");
    EXPECT_EQ(tokens(text(200, 199, 0)).substr(0, 13), "comment '/FEN");
    EXPECT_EQ(tokens(text(200, 1, 198)).substr(0, 13), "comment '/FEN");
    // A slash before the closing quote ends the token; the text still reaches to that quote.
    EXPECT_EQ(tokens("/FEN \"W/" + std::string(198, ' ') + "\" *").substr(0, 8), "fen 'W/ ");
    EXPECT_EQ(tokens("/FEN \"W/" + std::string(199, ' ') + "\" *").substr(0, 13), "comment '/FEN");
}

TEST(PdnToken, WithoutStoreThereAreNoTexts) {
    const char* const text = "[a \"b\"] {c} 12x23x34 /FEN \"W\"/ word";
    const char* at = text;
    PdnToken token;
    EXPECT_EQ(pdn_next_token(at, token, false), PDN_HEADER);
    EXPECT_FALSE(token.key || token.value);
    EXPECT_EQ(pdn_next_token(at, token, false), PDN_COMMENT);
    EXPECT_EQ(pdn_next_token(at, token, false), PDN_MOVE);
    EXPECT_EQ(token.from, 12);
    EXPECT_EQ(token.to, 34);
    EXPECT_EQ(token.is_capture, 1);
    EXPECT_EQ(token.side, 0);
    EXPECT_FALSE(token.path);
    EXPECT_EQ(pdn_next_token(at, token, false), PDN_EMBEDDED_FEN);
    EXPECT_FALSE(token.text);
    EXPECT_EQ(pdn_next_token(at, token, false), PDN_COMMENT);
    EXPECT_FALSE(token.text);
    EXPECT_EQ(pdn_next_token(at, token, false), PDN_END);
}

std::string random_text(std::mt19937& random) {
    static const char* const pieces[] = {
        "1",   "0",  "2",   "32",   "-",         "x",       "X",  " ",       "\n",      "\t",
        "{",   "}",  "(",   ")",    "[",         "]",       "\"", "*",       ".",       "/",
        "a",   "1.", "1-0", "0-2",  "/FEN",      "1/2-1/2", "W",  "/FEN \"", "\"/",     "FEN",
        "257", "!",  "\v",  "\xe9", "[Event \"", "\"]",     "B:", "32-28",   "12x23x34"};
    std::string text;
    for (uint32_t n = 1 + static_cast<uint32_t>(random()) % 60; n > 0; --n)
        text += pieces[static_cast<uint32_t>(random()) % std::size(pieces)];
    if (random() % 4 == 0)
        text.insert(text.size() / 2, 150 + static_cast<uint32_t>(random()) % 100, random() % 2 ? ' ' : ',');
    return text;
}

// The same tokens as the slow one, the same cursors, and the same ones without the texts.
TEST(PdnToken, AsTheSlowTokenizer) {
    std::mt19937 random(3);
    int kinds[10] = {};
    for (int i = 0; i < 60000; ++i) {
        const std::string text = random_text(random);
        const char* at = text.c_str();
        const char* bare_at = text.c_str();
        size_t slow_at = 0;
        for (;;) {
            PdnToken token, bare;
            const PdnTokenKind kind = pdn_next_token(at, token, true);
            const SlowToken slow = slow_next_token(text, slow_at);
            ASSERT_EQ(kind, slow.kind) << text;
            ASSERT_EQ(static_cast<size_t>(at - text.c_str()), slow_at) << text;
            ASSERT_EQ(pdn_next_token(bare_at, bare, false), kind) << text;
            ASSERT_EQ(bare_at, at) << text;
            ++kinds[kind];
            if (kind == PDN_END) break;
            ASSERT_EQ(token.key ? token.key.get() : "", slow.key) << text;
            ASSERT_EQ(token.value ? token.value.get() : "", slow.value) << text;
            ASSERT_EQ(token.text ? token.text.get() : "", slow.text) << text;
            if (kind != PDN_MOVE) continue;
            ASSERT_EQ(token.from, slow.from) << text;
            ASSERT_EQ(token.to, slow.to) << text;
            ASSERT_EQ(token.is_capture, slow.is_capture) << text;
            ASSERT_EQ(bare.from == token.from && bare.to == token.to && bare.is_capture == token.is_capture,
                      true);
            std::vector<int> path;
            for (int n = 1; token.path && n <= token.path[0]; ++n)
                path.push_back(token.path[static_cast<size_t>(n)]);
            if (slow.path.size() <= MAX_PATH_SQUARES) {
                ASSERT_EQ(path, slow.path) << text;
            }
        }
    }
    for (const int count : kinds) EXPECT_GT(count, 100);
}

// Processor time of this thread, so that the machine's other work plays no part.
double thread_seconds() {
    timespec now{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

// The least of some times to read a text of so many bytes, made of the piece alone.
double seconds_to_read(const std::string& piece, size_t bytes) {
    std::string text;
    text.reserve(bytes + piece.size());
    while (text.size() < bytes) text += piece;
    double least = 1e9;
    for (int i = 0; i < 3; ++i) {
        const double start = thread_seconds();
        const char* at = text.c_str();
        PdnToken token;
        while (pdn_next_token(at, token, false) != PDN_END) {
        }
        least = std::min(least, thread_seconds() - start);
        EXPECT_EQ(at, text.c_str() + text.size());
    }
    return least;
}

// A text eight times as long takes eight times as long. A reader that looks over the rest of the text for
// each token would take sixty-four times as long.
TEST(PdnToken, AwkwardTextsTakeLinearTime) {
    constexpr size_t BYTES = 60000;
    for (const std::string piece : {"/FEN", "/FEN \"", "/FEN \"W", "(", "{(", "[", "[a \"", "12-34 - ",
                                    "12-34 ", "1", "1 ", "1x", "*", "a", " ", "/", "1/2-1/", "\x01\xff"}) {
        const double once = seconds_to_read(piece, BYTES);
        EXPECT_LT(seconds_to_read(piece, 8 * BYTES), 24 * once + 0.002) << piece;
    }
}

}  // namespace
